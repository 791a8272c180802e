#include "loopback/timeline.h"

#include <algorithm>

namespace loopback {
namespace {

/// For a heap with the earliest step on top.
bool later(const Step &left, const Step &right)
{
    return left.dueNs != right.dueNs ? left.dueNs > right.dueNs : left.order > right.order;
}

std::int64_t sampleAt(std::int64_t timeNs, std::int64_t sampleRate)
{
    constexpr std::int64_t nsPerSecond = 1'000'000'000;
    return timeNs / nsPerSecond * sampleRate + timeNs % nsPerSecond * sampleRate / nsPerSecond;
}

} // namespace

Timeline::Timeline(const SourceSpec &spec)
    : m_spec(spec), m_clock(spec.clockRate), m_jitter(spec.jitter), m_format(spec.format)
{
    for (const Event &event : spec.events)
        (event.atNs ? m_timed : m_framed).push_back(&event);
    std::stable_sort(m_timed.begin(), m_timed.end(),
                     [](const Event *a, const Event *b) { return *a->atNs < *b->atNs; });
    std::stable_sort(m_framed.begin(), m_framed.end(),
                     [](const Event *a, const Event *b) { return *a->atFrame < *b->atFrame; });
}

std::optional<Step> Timeline::next()
{
    for (;;) {
        // nothing that is still to be worked out can come before this
        std::int64_t horizonNs = INT64_MAX;
        if (!m_framesOver)
            horizonNs = m_clock.frameNs(m_frame) - m_jitter.maxEarlyNs();
        if (eventsLeft())
            horizonNs = std::min(horizonNs, *m_timed[m_nextTimed]->atNs);
        if (!m_ahead.empty() && m_ahead.front().dueNs <= horizonNs) {
            std::pop_heap(m_ahead.begin(), m_ahead.end(), later);
            const Step step = m_ahead.back();
            m_ahead.pop_back();
            return step;
        }
        if (m_framesOver && !eventsLeft())
            return std::nullopt;
        advance();
    }
}

std::vector<Window> Timeline::vanishWindows(const SourceSpec &spec)
{
    const auto wanted = std::count_if(spec.events.begin(), spec.events.end(),
                                      [](const Event &event) { return event.kind == EventKind::vanish; });
    Timeline timeline(spec);
    while (timeline.m_vanished.size() < static_cast<std::size_t>(wanted)
           && !(timeline.m_framesOver && !timeline.eventsLeft())) {
        timeline.advance();
        timeline.m_ahead.clear();
    }
    return timeline.m_vanished;
}

/// Works out one more frame, or the next event where no frames are left.
void Timeline::advance()
{
    if (m_framesOver) {
        const Event &event = *m_timed[m_nextTimed++];
        apply(event, *event.atNs);
        return;
    }
    const std::int64_t frameNs = m_clock.frameNs(m_frame);
    if (m_spec.endNs && frameNs >= *m_spec.endNs) {
        m_framesOver = true;
        return;
    }
    for (; eventsLeft() && *m_timed[m_nextTimed]->atNs <= frameNs; ++m_nextTimed)
        apply(*m_timed[m_nextTimed], *m_timed[m_nextTimed]->atNs);
    for (; m_nextFramed < m_framed.size() && *m_framed[m_nextFramed]->atFrame <= m_frame; ++m_nextFramed)
        apply(*m_framed[m_nextFramed], frameNs);

    if (frameNs >= m_spec.startNs) {
        const bool quiet = frameNs < m_quietUntilNs;
        addVideo(frameNs);
        if (!quiet) {
            addAudio(frameNs, m_clock.frameNs(m_frame + 1) - frameNs);
            if (m_spec.metadata.everyFrames > 0 && m_frame % m_spec.metadata.everyFrames == 0)
                addMetadata(frameNs, m_spec.metadata.text);
        }
    }
    ++m_frame;
}

void Timeline::apply(const Event &event, std::int64_t nowNs)
{
    Step step;
    step.dueNs = nowNs;
    switch (event.kind) {
    case EventKind::drop:
        m_dropFrames = event.frames;
        return;
    case EventKind::stall:
        m_quietUntilNs = std::max(m_quietUntilNs, nowNs + event.durationNs);
        return;
    case EventKind::vanish:
        m_quietUntilNs = std::max(m_quietUntilNs, nowNs + event.durationNs);
        m_vanished.push_back({nowNs, nowNs + event.durationNs});
        return;
    case EventKind::burst:
        m_heldFrames = event.frames;
        m_heldUntilNs = m_clock.frameNs(m_frame + event.frames - 1);
        return;
    case EventKind::zeroSize:
        m_zeroFrames = event.frames;
        return;
    case EventKind::size:
        m_format.width = event.width;
        m_format.height = event.height;
        m_format.fourCC = event.fourCC.value_or(m_format.fourCC);
        m_format.stride = event.stride;
        m_format.noData = event.noData;
        return;
    case EventKind::rate:
        m_format.declaredRate = event.declaredRate;
        m_clock.changeRate(m_frame, event.clockRate);
        return;
    case EventKind::metadata:
        addMetadata(nowNs, event.text);
        return;
    case EventKind::error:
        step.kind = StepKind::error;
        step.receiver = event.receiver;
        break;
    case EventKind::status:
        step.kind = StepKind::status;
        break;
    case EventKind::unknown:
        step.kind = StepKind::unknown;
        step.value = event.value;
        break;
    }
    add(step);
}

void Timeline::addVideo(std::int64_t frameNs)
{
    Step step;
    step.frame = m_frame;
    step.timecode100ns = frameNs / 100;
    const bool dropped = m_dropFrames > 0;
    m_dropFrames -= dropped ? 1 : 0;
    if (dropped || frameNs < m_quietUntilNs) {
        step.kind = StepKind::skip;
        step.dueNs = frameNs;
        add(step);
        return;
    }
    step.format = m_format;
    if (m_zeroFrames > 0) {
        --m_zeroFrames;
        step.format.width = 0;
        step.format.height = 0;
        step.format.stride = 0;
        step.format.noData = true;
    }
    step.dueNs = frameNs + m_jitter.offsetNs(m_frame, frameNs);
    if (m_heldFrames > 0) {
        --m_heldFrames;
        step.dueNs = std::max(step.dueNs, m_heldUntilNs);
    }
    step.dueNs = std::max(step.dueNs, m_lastVideoNs); // never before the frame ahead of it
    m_lastVideoNs = step.dueNs;
    add(step);
}

void Timeline::addAudio(std::int64_t frameNs, std::int64_t intervalNs)
{
    const AudioSpec &audio = m_spec.audio;
    for (std::int32_t block = 0; block < audio.blocksPerFrame; ++block) {
        Step step;
        step.kind = StepKind::audio;
        step.dueNs = frameNs + intervalNs * (block + 1) / (audio.blocksPerFrame + 1);
        step.frame = m_audioBlock++;
        step.timecode100ns = frameNs / 100;
        // block ends fall on whole samples of the source's time, so the sound does not drift either
        step.firstSample = sampleAt(frameNs + intervalNs * block / audio.blocksPerFrame, audio.sampleRate);
        const std::int64_t endNs = frameNs + intervalNs * (block + 1) / audio.blocksPerFrame;
        const std::int64_t wanted = sampleAt(endNs, audio.sampleRate) - step.firstSample;
        step.samples = audio.samples > 0
                           ? audio.samples
                           : static_cast<std::int32_t>(std::clamp<std::int64_t>(wanted, 1, audio.sampleRate));
        add(step);
    }
}

void Timeline::addMetadata(std::int64_t dueNs, const std::string &text)
{
    Step step;
    step.kind = StepKind::metadata;
    step.dueNs = dueNs;
    step.timecode100ns = dueNs / 100;
    step.text = &text;
    add(step);
}

void Timeline::add(Step step)
{
    step.order = m_order++;
    m_ahead.push_back(step);
    std::push_heap(m_ahead.begin(), m_ahead.end(), later);
}

} // namespace loopback
