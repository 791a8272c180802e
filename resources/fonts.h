#pragma once

#include <QString>

/// Registers every font (*.ttf) of a folder, by default those of the resources, for this program and answers how many
/// there were. Fonts that the build did not find or that Qt cannot read are passed over without a word: Qt then takes
/// another font. GUI thread, once, after the application object was made.
int loadFonts(const QString &folder = QStringLiteral(":/font"));
