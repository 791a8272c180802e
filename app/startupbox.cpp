#include "app/startupbox.h"

#include "app/consolewriter.h"
#include "ndi/ndilib.h"
#include "widgets/custommessagebox.h"

#include <QCoreApplication>

namespace {

constexpr int noScreenStatus = 1;

void writeLine(const QString &line)
{
    StandardConsoleWriter().writeLine(line.toLocal8Bit());
}

QString missingRuntimeText()
{
    QString text = QCoreApplication::translate("WindowStart",
                                               "The NDI runtime is not installed on this computer. Get it from "
                                               "https://ndi.video/tools and start the program again.\n\nWithout it no "
                                               "stream can be received, but reports can be looked at.");
    const QStringList faults = ndiRuntimeFaults();
    if (!faults.isEmpty())
        text = QCoreApplication::translate("WindowStart",
                                           "The NDI runtime on this computer cannot be used. Get a new one from "
                                           "https://ndi.video/tools and start the program again.\n\n%1\n\nWithout it "
                                           "no stream can be received, but reports can be looked at.")
                   .arg(faults.join(QLatin1Char('\n')));
    return text;
}

} // namespace

bool showStartupFailure(const QString &message)
{
    writeLine(message);
    CustomMessageBox box;
    box.setTitle(QString());
    box.setMessage(QStringLiteral("FAIL"), QString(), QString(), message);
    box.setButtonText(QStringLiteral("OK"));
    box.adjustLayout();
    return box.exec() == QDialog::Accepted;
}

bool offerRevisionOnly()
{
    writeLine(ndiRuntimeProblem());
    CustomMessageBox box;
    box.setTitle(QCoreApplication::translate("WindowStart", "NDI RUNTIME"));
    box.setMessage(QStringLiteral("FAIL"), QString(), QString(), missingRuntimeText());
    box.setButtonText(QCoreApplication::translate("WindowStart", "VIEW REPORTS"));
    box.adjustLayout();
    return box.exec() == QDialog::Accepted;
}

void showRecoveredRecords(const QStringList &lines, QWidget *parent)
{
    if (lines.isEmpty())
        return;
    for (const QString &line : lines)
        writeLine(line);
    auto *const box = new CustomMessageBox(parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTitle(QCoreApplication::translate("WindowStart", "EARLIER TEST"));
    box->setMessage(QCoreApplication::translate("WindowStart", "RECORD RECOVERED"), QString(), QString(),
                    lines.join(QLatin1Char('\n')));
    box->setButtonText(QStringLiteral("OK"));
    box->setModal(false);
    box->adjustLayout();
    box->show();
}

int reportWithoutScreen(const QString &problem)
{
    writeLine(problem);
    return noScreenStatus;
}
