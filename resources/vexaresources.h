#pragma once

/// Makes the pictures (":/images/...") and fonts (":/font/...") known to Qt. They lie in a static library, of which
/// a linker takes only what is called: call this first in every program that uses them. Any number of times, from
/// any thread, with or without an application object.
void initVexaResources();
