#include "mainwindow/ndiwindowparts.h"

#include "mainwindow/machinetabs.h"
#include "probes/analysistool.h"
#include "probes/analysisworker.h"

NDIWindowParts NDIWindowParts::ofThisMachine()
{
    NDIWindowParts parts;
    parts.analysisToolThere = isAnalysisToolInstalled;
    parts.makeAnalysisWorker = [] { return std::make_unique<AnalysisWorker>(); };
    parts.adapterProbes = AdapterProbes::ofThisMachine;
    return parts;
}
