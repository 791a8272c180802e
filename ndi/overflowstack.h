#pragma once

/// Keeps a second stack for the calling thread, so that a crash handler can run when the thread's own stack overflows.
/// Made and destroyed on that thread, first and last in its work. Where the thread has such a stack already (sanitizers
/// set one up) it does nothing; if the memory cannot be had, an overflow ends the process without a dump.
class OverflowStack final {
public:
    OverflowStack();
    ~OverflowStack();
    OverflowStack(const OverflowStack &) = delete;
    OverflowStack &operator=(const OverflowStack &) = delete;

private:
    void *m_memory = nullptr; ///< Linux: the stack, null when this object set none up
};
