#pragma once

/// The program with its window, from the first check to the end: what main() returns. Main thread, once; makes the
/// application object itself. The command line is not for this life.
int runWindow();
