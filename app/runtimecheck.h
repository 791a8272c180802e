#pragma once

/// What the NDI runtime says to this machine.
enum class RuntimeCheck {
    Usable,
    Refused, ///< the library is there and turns the processor down
    Missing, ///< no library, or none that can be used; ndiRuntimeProblem() tells
};

/// Opens the runtime and initialises it. Main thread.
RuntimeCheck checkRuntime();
