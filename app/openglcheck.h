#pragma once

class QOffscreenSurface;

/// Whether OpenGL works here: makes the surface, which must be fresh, and asks a context on it for the version.
/// GUI thread.
bool isOpenGlUsable(QOffscreenSurface *surface);
