#pragma once

#include <QByteArray>

/// What the console program prints for -help.
inline const QByteArray usageText("Usage :\n"
                                  "-help\n"
                                  "\tShow command line usage.\n"
                                  "-findsources\n"
                                  "\tFind and list NDI sources.\n"
                                  "-test NDI_SOURCE_NAME [-time TIME] [-receivers RECEIVER_COUNT]\n"
                                  "\tStart testing during TIME[min(s)].\n\n"
                                  "\tDefault TIME value is 1.\n"
                                  "\tTIME is available as 1, 2, 3, 4, or 5.\n\n"
                                  "\tReceivers could be defined for multiple receivers.\n"
                                  "\tRECEIVER_COUNT is number of receivers.\n"
                                  "\tDefault RECEIVER_COUNT value is 1.\n"
                                  "\tRECEIVER_COUNT is available as 1, 2, 3, 4, 5, 6, 7 or 8.\n\n"
                                  "Examples:\n"
                                  "\tTessalyNDIVexa -findsources\n"
                                  "\tTessalyNDIVexa -test NDI_Camera -time 2 -receivers 2\n"
                                  "\tTessalyNDIVexa -test \"DESKTOP-123 (VLC)\" -time 2\n");
