#include "mainwindow/windowlog.h"

Q_LOGGING_CATEGORY(windowLog, "vexa.window", QtInfoMsg)
