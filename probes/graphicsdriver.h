#pragma once

/// Loads the NVIDIA driver's own library, if there is one, and initialises it: once for the process,
/// never released. Nothing is read through it, and its absence is no error. Any thread.
void initialiseGraphicsDriver();
