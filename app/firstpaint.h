#pragma once

class QWidget;

/// Writes a line to the log category "vexa.startup" (debug level, off by default) when the window has been painted for
/// the first time. Call it right after show(). bench/startup_bench waits for it. GUI thread.
void logFirstPaint(QWidget *window);
