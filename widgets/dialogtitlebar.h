#pragma once

#include <QString>

class QDialog;
class QLabel;
class QToolButton;
class QWidget;

/// The bar at the top of a dialog without a frame: a title, and a button that rejects the dialog.
/// All of it belongs to the dialog, which puts it where it should be. GUI thread.
struct DialogTitleBar {
    QWidget *bar = nullptr;       ///< widTitleBar
    QLabel *title = nullptr;      ///< lblTitle
    QToolButton *close = nullptr; ///< btnClose
};

DialogTitleBar makeDialogTitleBar(QDialog *dialog);

/// Style sheet of a dialog whose corners are cut round by its bar.
QString dialogStyle();
/// Style sheet of a dialog's main button. font: as style sheets write it, such as "bold 16px".
QString mainButtonStyle(const QString &font);
