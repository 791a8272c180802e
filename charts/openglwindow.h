#pragma once

class QOpenGLWidget;

/// On an X server, gives a widget with OpenGL a window of its own within the window that it is in; true if so. Qt then
/// composes that part of the screen alone with OpenGL. Otherwise it does so with the whole window, for each figure that
/// changes anywhere: without a graphics card some 10 ms each time. Pointer and keys stay with the window around it. The
/// widget is seen above all others of that window, those with windows of their own left aside.
/// Elsewhere nothing is done: a translucent window of Windows would not show it, and Wayland has no windows in windows.
/// For a widget with a parent, before it is shown. GUI thread.
bool giveOwnWindow(QOpenGLWidget *widget);
