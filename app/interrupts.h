#pragma once

#include <QObject>

#include <memory>

/// Tells when the user wants the program to end: Ctrl-C, a termination request, a terminal or console
/// that closes. Before arm() an interrupt ends the process at once with status 1; after it the first
/// one is signalled and a second one ends the process. What comes within repeatMs of the first counts
/// as the same: tools such as timeout(1) send each signal to the process and to its group. One object
/// per process, made and destroyed on the main thread.
class Interrupts final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Interrupts)

public:
    static constexpr int repeatMs = 100;

    explicit Interrupts(QObject *parent = nullptr);
    ~Interrupts() override;

    void arm();

signals:
    /// Sent once; on the main thread on Linux, on a thread of the system's on Windows.
    void interrupted();

private:
    class Private;
    std::unique_ptr<Private> m_private;
};
