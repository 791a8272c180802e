#pragma once

/// Shows the window and returns when it has been closed: the exit status of the program.
int runWindow(int argc, char *argv[]);
