#include "loopback/source.h"

#include <algorithm>
#include <utility>

namespace loopback {
namespace {

bool hasVanishEvent(const SourceSpec &spec)
{
    return std::any_of(spec.events.begin(), spec.events.end(),
                       [](const Event &event) { return event.kind == EventKind::vanish; });
}

bool isFor(const Step &step, int receiver)
{
    return !step.receiver || *step.receiver == receiver;
}

/// Plays a source's timeline at the speed of the asking.
class UnpacedFeed final : public Feed {
public:
    UnpacedFeed(const SourceSpec &spec, ItemMaker &maker, int sourceOrdinal, int receiverOrdinal, TruthLog &truth)
        : m_timeline(spec), m_maker(maker), m_sourceOrdinal(sourceOrdinal), m_receiverOrdinal(receiverOrdinal),
          m_truth(truth)
    {
    }

    std::optional<QueueItem> next() override
    {
        while (m_step || (m_step = m_timeline.next())) {
            if (m_step->kind == StepKind::skip)
                m_truth.write("skip", m_sourceOrdinal, m_step->frame, "");
            std::optional<QueueItem> item;
            if (isFor(*m_step, m_receiverOrdinal))
                item = m_maker.make(*m_step, false, wallNow100ns());
            if (!item && m_step->kind == StepKind::video)
                return std::nullopt; // no memory until a frame is freed: the same frame next time
            m_step.reset();
            if (item)
                return item;
        }
        return std::nullopt;
    }

private:
    Timeline m_timeline;
    std::optional<Step> m_step;
    ItemMaker &m_maker;
    const int m_sourceOrdinal;
    const int m_receiverOrdinal;
    TruthLog &m_truth;
};

} // namespace

Source::Source(const SourceSpec &spec, int ordinal, TruthLog &truth)
    : m_spec(spec), m_ordinal(ordinal), m_truth(truth), m_canVanish(hasVanishEvent(spec)), m_maker(spec)
{
}

Source::~Source()
{
    removeAll();
}

void Source::add(std::shared_ptr<Receiver> receiver, std::int64_t joinNs)
{
    const std::lock_guard<std::mutex> control(m_controlMutex);
    if (!m_timeline) {
        m_timeline = std::make_unique<Timeline>(m_spec);
        if (m_canVanish)
            m_vanished = Timeline::vanishWindows(m_spec);
        m_startNs = joinNs;
    }
    {
        const std::lock_guard<std::mutex> lock(m_receiversMutex);
        m_receivers.push_back(std::move(receiver));
    }
    if (!m_thread.joinable()) {
        m_timer.rearm();
        m_resumeNs = joinNs;
        m_thread = std::thread(&Source::run, this);
    }
}

void Source::remove(const Receiver *receiver)
{
    const std::lock_guard<std::mutex> control(m_controlMutex);
    bool last = false;
    {
        const std::lock_guard<std::mutex> lock(m_receiversMutex);
        m_receivers.erase(std::remove_if(m_receivers.begin(), m_receivers.end(),
                                         [receiver](const auto &one) { return one.get() == receiver; }),
                          m_receivers.end());
        last = m_receivers.empty();
    }
    if (last)
        stopThread();
}

void Source::removeAll()
{
    const std::lock_guard<std::mutex> control(m_controlMutex);
    {
        const std::lock_guard<std::mutex> lock(m_receiversMutex);
        m_receivers.clear();
    }
    stopThread();
}

void Source::stopThread()
{
    if (!m_thread.joinable())
        return;
    m_timer.stop();
    m_thread.join();
}

std::unique_ptr<Feed> Source::makeFeed(int receiverOrdinal)
{
    return std::make_unique<UnpacedFeed>(m_spec, m_maker, m_ordinal, receiverOrdinal, m_truth);
}

std::optional<std::int64_t> Source::clockStartNs() const
{
    const std::int64_t startNs = m_startNs;
    return startNs == INT64_MIN ? std::nullopt : std::optional<std::int64_t>(startNs);
}

bool Source::isVanished(std::int64_t nowNs, std::int64_t &changeNs) const
{
    const std::optional<std::int64_t> startNs = clockStartNs();
    if (!startNs)
        return false;
    for (const Window &window : m_vanished) {
        const std::int64_t fromNs = *startNs + window.fromNs;
        const std::int64_t untilNs = *startNs + window.untilNs;
        if (nowNs < fromNs)
            changeNs = std::min(changeNs, fromNs);
        else if (nowNs < untilNs)
            changeNs = std::min(changeNs, untilNs);
        if (nowNs >= fromNs && nowNs < untilNs)
            return true;
    }
    return false;
}

/// The pacing thread. Every frame is drawn before its time comes, and all are sent, in order, even
/// when the thread was kept from running for a while: the clock never gives way.
void Source::run()
{
    preparePacingThread();
    const std::int64_t startNs = m_startNs;
    for (;;) {
        if (!m_step)
            m_step = m_timeline->next();
        if (!m_step) { // the source has ended
            m_timer.sleepUntil(INT64_MAX);
            return;
        }
        const std::int64_t dueNs = startNs + m_step->dueNs;
        if (dueNs < m_resumeNs) { // there was no receiver at that time
            m_step.reset();
            continue;
        }
        const std::int64_t wallStart100ns = wallNow100ns() + (startNs - steadyNowNs()) / 100;
        std::optional<QueueItem> item = m_maker.make(*m_step, true, wallStart100ns + m_step->timecode100ns);
        if (!m_timer.sleepUntil(dueNs))
            return;
        deliver(*m_step, std::move(item));
        m_step.reset();
    }
}

void Source::deliver(const Step &step, std::optional<QueueItem> item)
{
    if (step.kind == StepKind::skip || !item) {
        m_truth.write("skip", m_ordinal, step.frame, step.kind == StepKind::skip ? "" : "memory");
        return;
    }
    const std::int64_t nowNs = steadyNowNs();
    const std::lock_guard<std::mutex> lock(m_receiversMutex);
    for (const auto &receiver : m_receivers) {
        if (isFor(step, receiver->ordinal()))
            receiver->deliver(*item, nowNs);
    }
}

} // namespace loopback
