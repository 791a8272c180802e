#pragma once

#include "mainwindow/analysisrun.h"

#include <functional>

struct AdapterProbes;

/// What a window takes from outside; tests put their own in.
struct NDIWindowParts {
    int minuteMs = 60000;                       ///< length of a minute of measurement
    std::function<bool()> analysisToolThere;    ///< whether ANALYSIS is possible
    AnalysisRun::MakeWorker makeAnalysisWorker; ///< for each analysis
    std::function<AdapterProbes()> adapterProbes;
    /// No NDI runtime here: reports can be looked at and that is all. The runtime is not touched.
    bool revisionOnly = false;

    static NDIWindowParts ofThisMachine();
};
