#pragma once

#include "tests/support/programrun.h"
#include "tests/support/windowdriver.h"

#include <QDir>
#include <QtTest>

#include <algorithm>
#include <chrono>
#include <initializer_list>
#include <optional>

/// The real program with its window, told what to do by keys and known by what it logs.
class DrivenWindow : public ProgramRun {
public:
    using Key = windowdriver::Key;

    DrivenWindow() : ProgramRun(QStringList())
    {
        setVariable(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("vexa.window.debug=true"));
        keepTruth();
    }

    /// Waits for the window and for a list of this many sources, at least.
    bool isOpen(int sources)
    {
        return isShown() && waitForError("vexa.window: sources listed: " + QByteArray::number(sources) + "\n", openMs);
    }
    bool isShown()
    {
        return QTest::qWaitFor(
                   [this] {
                       m_window = find(QStringLiteral("Tessaly NDI VEXA"));
                       return m_window || process().state() == QProcess::NotRunning;
                   },
                   openMs)
               && m_window;
    }
    /// Another window of it, such as a message; of any title when none is given. Nothing when there is none now.
    std::optional<windowdriver::OtherWindow> find(const QString &title)
    {
        const QVector<windowdriver::OtherWindow> all = windowdriver::windowsOf(process().processId());
        for (const windowdriver::OtherWindow &window : all) {
            if (title.isEmpty() || window.title == title)
                return window;
        }
        return std::nullopt;
    }
    bool hasOpened(const QString &title)
    {
        return QTest::qWaitFor([&] { return find(title) || hasStopped(); }, openMs) && !hasStopped();
    }
    /// Waits for such a window and presses a key until it is gone: what is sent before it has the keyboard may be lost.
    bool answer(Key key, const QString &title = QString())
    {
        if (!hasOpened(title))
            return false;
        const auto window = find(title);
        if (!window)
            return false;
        return QTest::qWaitFor(
            [&] {
                const QVector<windowdriver::OtherWindow> all = windowdriver::windowsOf(process().processId());
                const bool isThere = std::any_of(all.cbegin(), all.cend(),
                                                 [&window](const auto &one) { return one.handle == window->handle; });
                if (isThere)
                    windowdriver::pressKey(*window, key);
                return !isThere;
            },
            closeMs);
    }
    /// The same, and the program ends.
    bool isLeftBy(Key key, const QString &title = QString()) { return answer(key, title) && stops(); }
    void press(std::initializer_list<Key> keys)
    {
        for (const Key key : keys)
            windowdriver::pressKey(*m_window, key);
    }
    /// From a window that was just opened: SINGLE with two receivers; the list of sources has the focus then.
    void chooseTwoReceivers() { press({Key::Tab, Key::Tab, Key::Tab, Key::Down, Key::BackTab}); }
    /// From a window that was just opened: MULTIPLE with all sources.
    void chooseAllSources() { press({Key::Tab, Key::Right, Key::Space, Key::Tab, Key::Tab, Key::CtrlA}); }
    void startOrStop() { press({Key::CtrlReturn}); }

    int saidSoFar(const QByteArray &text) { return standardError().count(text); }
    bool hasSaid(const QByteArray &text, int times = 1, int timeoutMs = 40000)
    {
        return QTest::qWaitFor([&] { return saidSoFar(text) >= times || process().state() == QProcess::NotRunning; },
                               timeoutMs)
               && saidSoFar(text) >= times;
    }
    bool hasStarted(const QByteArray &mode, int times = 1)
    {
        return hasSaid("vexa.window: test started: " + mode + "\n", times);
    }
    bool hasEnded(int times = 1) { return hasSaid("vexa.window: test ended: ", times); }

    /// As the desktop's close button does.
    void askToClose() { windowdriver::close(*m_window); }
    bool closes()
    {
        askToClose();
        return stops() && endedWith(0);
    }
    bool hasStopped() { return process().state() == QProcess::NotRunning; }
    bool stops()
    {
        return QTest::qWaitFor([this] { return hasStopped(); }, closeMs);
    }
    /// Paths of the records, in the order of their making.
    QStringList records() const
    {
        const QDir folder(home() + QStringLiteral("/Documents/Tessaly/Vexa"));
        QStringList paths;
        for (const QString &name : folder.entryList({QStringLiteral("vexa_*.csv")}, QDir::Files, QDir::Name))
            paths.append(folder.filePath(name));
        return paths;
    }
    static qint64 steadyNs()
    {
        return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
            .count();
    }

private:
    static constexpr int openMs = 40000; ///< many of them may be starting
    static constexpr int closeMs = 30000;

    std::optional<windowdriver::OtherWindow> m_window;
};
