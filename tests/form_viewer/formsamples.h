#pragma once

#include "mainwindow/ndiwindowform.h"

#include <QMainWindow>
#include <QString>
#include <QVector>

class QCheckBox;

/// The window's form without the program behind it, with texts and curves as they are in use.
class FormSample final : public QMainWindow {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FormSample)

public:
    FormSample();

    /// Every state that there is a picture of, by name.
    static QStringList states();
    /// Brings the form into one of the states.
    void show(const QString &state);
    using QWidget::show;

    const Ui::NDIWindow &form() const { return m_form; }

private:
    void fillTables();
    void fillCharts(int receivers);
    void fillTabs();
    void chooseTab(int index);
    void expand(bool expanded);

    Ui::NDIWindow m_form;
    QVector<QCheckBox *> m_checks;
};
