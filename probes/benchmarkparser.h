#pragma once

#include <QString>

/// What the benchmark tool says about the machine. 0: it did not say.
struct BenchmarkReport {
    int cores = 0;        ///< processor cores it found
    float streams = 0.0F; ///< its estimate of 1080p streams that can be received; as read, may be anything

    /// The estimate cut towards zero, within the range of an int; 0 when it is not a number.
    int wholeStreams() const;
};

/// Reads what the tool printed, line by line. Of several lines of a kind the last one counts; a number
/// that does not read is 0; all other lines are passed over.
BenchmarkReport parseBenchmarkOutput(const QString &output);

/// How well a machine does.
enum class BenchmarkRating {
    Low,    ///< up to 25 streams
    Medium, ///< 26 to 50
    High,   ///< from 51
};

BenchmarkRating rateStreams(int streams);
