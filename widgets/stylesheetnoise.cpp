#include "widgets/stylesheetnoise.h"

#include <QString>

#include <atomic>

namespace {

// Messages come from any thread, also while the filter is installed. Stays set: a handler that came after ours may
// still call it.
std::atomic<QtMessageHandler> formerHandler{nullptr};

void filterMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (StyleSheetNoiseFilter::isNoise(type, message))
        return;
    if (const QtMessageHandler former = formerHandler)
        former(type, context, message);
}

} // namespace

StyleSheetNoiseFilter::StyleSheetNoiseFilter()
{
    const QtMessageHandler former = qInstallMessageHandler(nullptr);
    m_installed = former != filterMessage; // else another filter is at work already
    if (m_installed)
        formerHandler = former;
    qInstallMessageHandler(filterMessage);
}

StyleSheetNoiseFilter::~StyleSheetNoiseFilter()
{
    if (!m_installed)
        return;
    const QtMessageHandler current = qInstallMessageHandler(formerHandler);
    if (current != filterMessage)
        qInstallMessageHandler(current);
}

bool StyleSheetNoiseFilter::isNoise(QtMsgType type, const QString &message)
{
    return type == QtWarningMsg
           && message.startsWith(QLatin1String("Could not parse stylesheet of object CustomSourceButton("));
}
