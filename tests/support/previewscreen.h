#pragma once

#include "tests/support/testbase.h"

#include <QWidget>
#include <QtTest>

/// Shows a window and waits until the screen has it. Wine cannot scale window frames, and Qt says so
/// each time; that is no failure of the test.
inline bool showOnScreen(QWidget &window)
{
    TestBase::expectWarning(QStringLiteral("EnableNonClientDpiScaling() failed"));
    window.show();
    return QTest::qWaitForWindowExposed(&window);
}
