#pragma once

/// What happened to the fake driver so far.
struct FakeDriverCounts {
    int initialised = 0;
    int otherCalls = 0;
    int queries = 0;
    unsigned int firstQueries[3] = {};
};

using FakeDriverCountsFunction = const FakeDriverCounts *(*)();
