#include "tests/support/windowdriver.h"

#include <windows.h>

namespace {

HWND nativeOf(const windowdriver::OtherWindow &window)
{
    return reinterpret_cast<HWND>(static_cast<quintptr>(window.handle));
}

/// Modifiers cannot be sent to another process' window: a key that needs one has none here.
WPARAM codeOf(windowdriver::Key key)
{
    using windowdriver::Key;
    switch (key) {
    case Key::Return:
        return VK_RETURN;
    case Key::Escape:
        return VK_ESCAPE;
    case Key::Tab:
        return VK_TAB;
    case Key::Down:
        return VK_DOWN;
    case Key::Right:
        return VK_RIGHT;
    case Key::Space:
        return VK_SPACE;
    case Key::F5:
        return VK_F5;
    case Key::BackTab:
    case Key::CtrlReturn:
    case Key::CtrlA:
    case Key::CtrlO:
    case Key::CtrlS:
        break;
    }
    return 0;
}

struct Search {
    DWORD processId;
    QVector<windowdriver::OtherWindow> *found;
};

BOOL CALLBACK look(HWND window, LPARAM argument)
{
    const auto *search = reinterpret_cast<const Search *>(argument);
    DWORD processId = 0;
    GetWindowThreadProcessId(window, &processId);
    RECT place = {};
    if (processId != search->processId || !IsWindowVisible(window) || !GetWindowRect(window, &place))
        return TRUE;
    wchar_t title[512] = {};
    const int length = GetWindowTextW(window, title, 512);
    search->found->append({static_cast<quint64>(reinterpret_cast<quintptr>(window)),
                           QString::fromWCharArray(title, length),
                           QRect(QPoint(place.left, place.top), QPoint(place.right - 1, place.bottom - 1))});
    return TRUE;
}

} // namespace

namespace windowdriver {

QVector<OtherWindow> windowsOf(qint64 processId)
{
    QVector<OtherWindow> found;
    Search search{static_cast<DWORD>(processId), &found};
    EnumWindows(look, reinterpret_cast<LPARAM>(&search));
    return found;
}

void pressKey(const OtherWindow &window, Key key)
{
    const WPARAM code = codeOf(key);
    if (code == 0)
        return;
    PostMessageW(nativeOf(window), WM_KEYDOWN, code, 1);
    PostMessageW(nativeOf(window), WM_KEYUP, code, static_cast<LPARAM>(0xC0000001));
}

void close(const OtherWindow &window)
{
    PostMessageW(nativeOf(window), WM_CLOSE, 0, 0);
}

} // namespace windowdriver
