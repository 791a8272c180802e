#include "widgets/dialogtitlebar.h"

#include <QBoxLayout>
#include <QCoreApplication>
#include <QDialog>
#include <QLabel>
#include <QToolButton>

namespace {

const char *const barStyle = "QWidget{\n\tbackground-color : #15cfbb;\n\tborder-top-left-radius: 5px; "
                             "border-top-right-radius: 5px;\n}";
const char *const titleStyle = "QLabel{\n\tfont: 600 16px \"Kumbh Sans\";\n\tcolor : #ffffff;\n}";
const char *const closeStyle = "QToolButton{\n\tborder: 1px solid transparent; border-radius: 3px;\n"
                               "\timage: url(:/images/quit-vexa.png);\n}"
                               "QToolButton:hover{\n\timage: url(:/images/quit-vexa-hover.png);\n}"
                               "QToolButton:pressed{\n\timage: url(:/images/quit-vexa-gray.png);\n}"
                               "QToolButton:focus{\n\tborder-color: #ffffff;\n}";

} // namespace

DialogTitleBar makeDialogTitleBar(QDialog *dialog)
{
    DialogTitleBar parts;
    parts.bar = new QWidget(dialog);
    parts.bar->setObjectName(QStringLiteral("widTitleBar"));
    parts.bar->setStyleSheet(QLatin1String(barStyle));
    parts.bar->setFixedHeight(36);
    parts.title = new QLabel(parts.bar);
    parts.title->setObjectName(QStringLiteral("lblTitle"));
    parts.title->setStyleSheet(QLatin1String(titleStyle));
    parts.title->setTextFormat(Qt::PlainText);
    parts.close = new QToolButton(parts.bar);
    parts.close->setObjectName(QStringLiteral("btnClose"));
    parts.close->setStyleSheet(QLatin1String(closeStyle));
    parts.close->setFixedSize(24, 24);
    parts.close->setAccessibleName(QCoreApplication::translate("DialogTitleBar", "Close"));
    auto *layout = new QHBoxLayout(parts.bar);
    layout->setContentsMargins(14, 0, 8, 0);
    layout->addWidget(parts.title, 1);
    layout->addWidget(parts.close);
    QObject::connect(parts.close, &QToolButton::released, dialog, &QDialog::reject);
    return parts;
}

QString dialogStyle()
{
    return QStringLiteral("QDialog{\n\tbackground-color: transparent;\n}");
}

QString mainButtonStyle(const QString &font)
{
    // The border of a button without the focus keeps it at the same size.
    return QStringLiteral("QPushButton{\n\tbackground-color: #15cfbb; color: white;\n"
                          "\tfont: %1 \"Kumbh Sans\";\n\tborder: 2px solid #15cfbb; border-radius: 15px;\n"
                          "\tpadding: 3px 22px; outline: none;\n}"
                          "QPushButton:hover{\n\tbackground-color: #12b3a2; border-color: #12b3a2;\n}"
                          "QPushButton:pressed{\n\tbackground-color: #0e8f81; border-color: #0e8f81;\n}"
                          "QPushButton:focus{\n\tborder-color: #ffffff;\n}")
        .arg(font);
}
