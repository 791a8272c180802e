#pragma once

#include "mainwindow/sourcecatalog.h"

#include <QObject>
#include <QVector>

class CustomHeader;
class FormatProbes;
class QCheckBox;
namespace Ui {
class NDIWindow;
}

/// The found sources as the form shows them: the combo box, the tables with their check boxes, and what the
/// probes find out about each. GUI thread; form and probes have to live as long.
class SourceLists final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SourceLists)

public:
    /// Sets the form's tables up.
    SourceLists(const Ui::NDIWindow *form, FormatProbes *probes);

    const SourceCatalog &catalog() const { return m_catalog; }
    /// Rows whose box is checked, in order.
    QVector<int> checkedRows() const;
    /// Shows this list in the place of the former one, nothing checked, and starts to probe it.
    void replace(const NDIlib_source_t *sources, int count);

private:
    void clear();
    void addRow(int index);
    void updateStatusRows();
    void setAllChecked(bool checked);
    void takeFormat(int index, double fps, int fourCC, int width, int height);
    void showSource(int index);
    void showFormat(const SourceInfo &info);

    const Ui::NDIWindow *ui;
    FormatProbes *m_probes;
    SourceCatalog m_catalog;
    CustomHeader *m_header;            ///< of sourceTable, which owns it
    QVector<QCheckBox *> sourceChecks; ///< of sourceTable's rows, owned by the table
    bool m_isCheckingAll = false;
};
