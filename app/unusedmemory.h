#pragma once

// The receivers' threads copy pictures of several MB. The C library of Linux gives threads stores of memory of their
// own, dozens of them, and keeps up to two pictures at the end of each for good: from test to test another one is
// filled.

/// Few stores of memory for all threads. To be called before there are threads.
void keepFewMemoryStores();

/// Gives memory that was freed back to the system. For the moment after a test; takes about a millisecond. Any thread.
void returnUnusedMemory();
