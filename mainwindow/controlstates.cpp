#include "mainwindow/controlstates.h"

#include "ui_ndiwindow.h"

ControlStates::ControlStates(const Ui::NDIWindow *form)
    : ui(form), m_controls{{ui->btn_test, single | multiple, false},
                           {ui->timeList, idle, true},
                           {ui->singleOption, single, true},
                           {ui->multiOption, multiple, true},
                           {ui->analysisOption, analysis, true},
                           {ui->benchmarkOption, idle, false},
                           {ui->btn_refresh, idle, true},
                           {ui->btn_import, idle, true},
                           {ui->btn_export, idle, true},
                           {ui->btn_import1, idle, true},
                           {ui->btn_export1, idle, true}}
{
}

void ControlStates::enter(State state)
{
    ui->btn_test->setText(state == idle ? QStringLiteral("TEST") : QStringLiteral("STOP"));
    for (const Control &control : qAsConst(m_controls)) {
        if (state == idle && control.comesBack)
            control.widget->setEnabled(true);
        else if (state != idle && (control.busyStates & state) == 0)
            control.widget->setEnabled(false);
    }
}

void ControlStates::allowBenchmark()
{
    ui->benchmarkOption->setEnabled(true);
}
