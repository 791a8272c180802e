#pragma once

#include <QString>

/// Registers the weights of Kumbh Sans in a folder, by default that of the resources, for this program and answers how
/// many there were; Lato stays in the resources, since nothing shows it. Fonts that the build did not find or that Qt
/// cannot read are passed over without a word: Qt then takes another font. GUI thread, once, after the application
/// object was made.
int loadFonts(const QString &folder = QStringLiteral(":/font"));
