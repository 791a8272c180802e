#pragma once

#include "tests/faults/drivenwindow.h"
#include "tests/support/testrecord.h"

#include <unistd.h>

/// A window with one source, and two receivers chosen once it is open.
class StageWindow : public DrivenWindow {
public:
    StageWindow() { setScenario(stage()); }
    static QByteArray stage()
    {
        return R"({"queueFrames":1000,"discoveryMs":0,"discoveryBatch":100,"sources":[)"
               R"({"name":"STAGE","width":640,"height":360,"rateN":25,"rateD":1}]})";
    }
    /// Through a line of shell, in which the program is "$@", as root of a name space of its own, where mounting is
    /// allowed.
    void throughShell(const QString &line)
    {
        startThrough(QStringLiteral("unshare"),
                     {geteuid() == 0 ? QStringLiteral("-m") : QStringLiteral("-rm"), QStringLiteral("bash"),
                      QStringLiteral("-c"), line, QStringLiteral("shell")});
    }
    bool begins(int times = 1)
    {
        startOrStop();
        return hasStarted("single, 2 receivers", times);
    }
    bool ends(int times = 1)
    {
        startOrStop();
        return hasEnded(times);
    }
    /// What is in its only record.
    TestRecord record() const
    {
        TestRecord none;
        none.problem = QStringLiteral("%1 records").arg(records().size());
        return records().size() == 1 ? TestRecord::read(records().constFirst()) : none;
    }
};
