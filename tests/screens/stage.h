#pragma once

#include "mainwindow/ndiwindow.h"
#include "widgets/framelesswindow.h"

#include <QDialog>
#include <QPointer>
#include <QTemporaryDir>

#include <functional>
#include <memory>

namespace Ui {
class NDIWindow;
}
class QRadioButton;

/// What the pictures show: the real window on the loopback runtime, with made-up facts about the machine and
/// stand-ins for the outside tools. Everything lies in a folder that goes with the stage. GUI thread.
class Stage final {
public:
    /// Writes the pictures into this folder, which exists.
    explicit Stage(const QString &pictures);
    ~Stage();
    Q_DISABLE_COPY_MOVE(Stage)

    /// Before the first call of the runtime and before a window is made.
    bool setUp();
    /// A new window in place of the one before, with its list of sources and their formats.
    void openWindow();
    const Ui::NDIWindow &ui() const;

    void choose(QRadioButton *option);
    /// Goes on when this is so; the program ends with a message when it is not within two minutes.
    void await(const char *what, const std::function<bool()> &isSo);
    /// Lets the test run until so many percent are over.
    void awaitProgress(double percent);
    void awaitIdle();
    /// Does something with the modal dialog that this action opens.
    void withDialog(const std::function<void()> &open, const std::function<void(QDialog *)> &act);
    /// Does something with the next modal dialog other than this one.
    static void whenDialogComes(const std::function<void(QDialog *)> &act, const QDialog *after = nullptr);
    /// Saves the picture of the window, with a dialog over it.
    void save(const char *name);
    QString filePath(const char *name) const { return m_folder.filePath(QLatin1String(name)); }

private:
    void showFacts();

    QTemporaryDir m_folder;
    const QString m_pictures;
    QPointer<FramelessWindow> m_frame; ///< deletes itself when it is closed
    QPointer<NDIWindow> m_window;      ///< the frame's
};
