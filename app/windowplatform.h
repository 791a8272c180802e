#pragma once

#include <QString>

#include <string>
#include <vector>

/// What the program with its window needs of the system around it before Qt exists.

/// The arguments that the application object gets in place of the command line. Movable neither in memory nor in
/// time: the object keeps references.
class WindowArguments final {
public:
    WindowArguments();
    WindowArguments(const WindowArguments &) = delete;
    WindowArguments &operator=(const WindowArguments &) = delete;

    char **values() { return m_pointers.data(); }

    int count = 0;

private:
    std::vector<std::string> m_texts;
    std::vector<char *> m_pointers; ///< into m_texts, with a null at the end
};

/// The arguments of this platform, the program's name first.
std::vector<std::string> windowArguments();

/// Why no window can be shown here, one line; empty when nothing speaks against it.
QString displayProblem();
