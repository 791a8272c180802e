#pragma once

/// Gives memory that was freed back to the system. The receivers' threads copy pictures of several MB, and the C
/// library of Linux keeps a store of free memory for each thread that ran: from test to test another one is filled. For
/// the moment after a test; takes about a millisecond. Any thread.
void returnUnusedMemory();
