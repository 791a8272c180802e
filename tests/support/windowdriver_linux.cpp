#include "tests/support/windowdriver.h"

#include <QByteArray>

#include <memory>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>

namespace {

struct DisplayCloser {
    void operator()(Display *display) const { XCloseDisplay(display); }
};
using DisplayHandle = std::unique_ptr<Display, DisplayCloser>;

DisplayHandle openDisplay()
{
    // A window may go away between two questions about it.
    XSetErrorHandler([](Display *, XErrorEvent *) { return 0; });
    return DisplayHandle(XOpenDisplay(nullptr));
}

/// The value of a window's property; empty when it has none.
QByteArray property(Display *display, Window window, const char *name, int bytesPerItem)
{
    Atom type = None;
    int format = 0;
    unsigned long items = 0;
    unsigned long left = 0;
    unsigned char *data = nullptr;
    if (XGetWindowProperty(display, window, XInternAtom(display, name, False), 0, 1024, False, AnyPropertyType, &type,
                           &format, &items, &left, &data)
            != Success
        || !data)
        return {};
    QByteArray value(reinterpret_cast<const char *>(data), static_cast<int>(items) * bytesPerItem);
    XFree(data);
    return value;
}

qint64 processOf(Display *display, Window window)
{
    const QByteArray value = property(display, window, "_NET_WM_PID", sizeof(long));
    return value.size() < static_cast<int>(sizeof(long)) ? -1 : *reinterpret_cast<const long *>(value.constData());
}

struct KeyStroke {
    KeySym symbol;
    unsigned int modifiers;
};

KeyStroke strokeOf(windowdriver::Key key)
{
    using windowdriver::Key;
    switch (key) {
    case Key::Return:
        return {XK_Return, 0};
    case Key::Escape:
        return {XK_Escape, 0};
    case Key::Tab:
        return {XK_Tab, 0};
    case Key::Down:
        return {XK_Down, 0};
    case Key::BackTab:
        return {XK_Tab, ShiftMask};
    case Key::Right:
        return {XK_Right, 0};
    case Key::Space:
        return {XK_space, 0};
    case Key::CtrlReturn:
        return {XK_Return, ControlMask};
    case Key::CtrlA:
        return {XK_a, ControlMask};
    case Key::CtrlO:
        return {XK_o, ControlMask};
    case Key::CtrlS:
        return {XK_s, ControlMask};
    case Key::F5:
        return {XK_F5, 0};
    }
    return {NoSymbol, 0};
}

} // namespace

namespace windowdriver {

QVector<OtherWindow> windowsOf(qint64 processId)
{
    QVector<OtherWindow> found;
    const DisplayHandle display = openDisplay();
    if (!display)
        return found;
    Window root = None;
    Window parent = None;
    Window *children = nullptr;
    unsigned int count = 0;
    if (!XQueryTree(display.get(), DefaultRootWindow(display.get()), &root, &parent, &children, &count))
        return found;
    for (unsigned int i = 0; i < count; ++i) {
        XWindowAttributes facts = {};
        if (processOf(display.get(), children[i]) != processId
            || !XGetWindowAttributes(display.get(), children[i], &facts) || facts.map_state != IsViewable)
            continue;
        found.append({children[i], QString::fromUtf8(property(display.get(), children[i], "_NET_WM_NAME", 1)),
                      QRect(facts.x, facts.y, facts.width, facts.height)});
    }
    if (children)
        XFree(children);
    return found;
}

void pressKey(const OtherWindow &window, Key key)
{
    const DisplayHandle display = openDisplay();
    if (!display)
        return;
    XEvent event = {};
    event.xkey.window = window.handle;
    event.xkey.root = DefaultRootWindow(display.get());
    event.xkey.same_screen = True;
    event.xkey.time = CurrentTime;
    const KeyStroke stroke = strokeOf(key);
    event.xkey.keycode = XKeysymToKeycode(display.get(), stroke.symbol);
    event.xkey.state = stroke.modifiers;
    // Shortcuts work in the active window only, and without a window manager nobody else makes it that.
    XSetInputFocus(display.get(), window.handle, RevertToPointerRoot, CurrentTime);
    for (const int type : {KeyPress, KeyRelease}) {
        event.type = type;
        XSendEvent(display.get(), window.handle, True, type == KeyPress ? KeyPressMask : KeyReleaseMask, &event);
    }
    XSync(display.get(), False);
}

void close(const OtherWindow &window)
{
    const DisplayHandle display = openDisplay();
    if (!display)
        return;
    XEvent event = {};
    event.type = ClientMessage;
    event.xclient.window = window.handle;
    event.xclient.message_type = XInternAtom(display.get(), "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(XInternAtom(display.get(), "WM_DELETE_WINDOW", False));
    event.xclient.data.l[1] = CurrentTime;
    XSendEvent(display.get(), window.handle, False, NoEventMask, &event);
    XSync(display.get(), False);
}

} // namespace windowdriver
