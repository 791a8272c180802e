#pragma once

#include <QString>

/// Name of a frame's FourCC: its four letters, the first one in the lowest byte. Empty for a code that is
/// not one of the runtime's video formats.
QString formatName(quint32 fourCC);
