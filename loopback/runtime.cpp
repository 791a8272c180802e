#include "loopback/runtime.h"

#include "loopback/deadcall.h"
#include "loopback/platform.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

namespace loopback {
namespace {

// Handles look like no address, so that one that is followed by mistake shows at once.
constexpr std::uintptr_t kReceiverTag = 0x4C42'0001'0000'0000;
constexpr std::uintptr_t kFinderTag = 0x4C42'0002'0000'0000;
constexpr std::uintptr_t kHandleStep = 16;

/// A caller that polls a dead handle must not take a whole core.
constexpr std::uint32_t kDeadWaitMs = 20;

std::uintptr_t numberOf(const void *handle)
{
    return reinterpret_cast<std::uintptr_t>(handle);
}

/// A handle is a number in the clothes of a pointer; nothing ever follows it.
template <typename Handle>
Handle handleOf(std::uintptr_t number)
{
    return reinterpret_cast<Handle>(number); // NOLINT(performance-no-int-to-ptr)
}

} // namespace

Runtime::Runtime(std::unique_ptr<const Scenario> scenario, TruthLog &truth)
    : m_scenario(std::move(scenario)), m_truth(truth), m_crash(m_scenario ? m_scenario->crash : std::nullopt)
{
    if (!m_scenario)
        return;
    const std::vector<SourceSpec> &specs = m_scenario->sources;
    for (std::size_t i = 0; i < specs.size(); ++i) {
        m_sources.push_back(std::make_unique<Source>(specs[i], static_cast<int>(i), truth));
        m_byName.emplace(specs[i].name, i);
        m_byUrl.emplace(specs[i].url, i);
    }
}

Runtime::~Runtime()
{
    shutDown();
}

bool Runtime::initialize()
{
    m_crash.pass(CrashCall::initialize);
    return m_scenario && m_scenario->initialize;
}

void Runtime::shutDown()
{
    for (const auto &source : m_sources)
        source->removeAll();
}

NDIlib_find_instance_t Runtime::createFinder()
{
    if (!m_scenario || m_scenario->finderFails)
        return nullptr;
    auto finder = std::make_shared<Finder>(*m_scenario, m_sources, steadyNowNs());
    const std::lock_guard<std::shared_mutex> lock(m_handlesMutex);
    const std::uintptr_t handle = kFinderTag + kHandleStep * ++m_findersMade;
    m_finders.emplace(handle, std::move(finder));
    return handleOf<NDIlib_find_instance_t>(handle);
}

bool Runtime::waitForSources(NDIlib_find_instance_t handle, std::uint32_t timeoutMs)
{
    m_crash.pass(CrashCall::wait);
    const std::shared_ptr<Finder> finder = finderOf(handle);
    if (finder)
        return finder->wait(timeoutMs);
    m_truth.write("dead", -1, kDeadFinder, "find_wait");
    std::this_thread::sleep_for(std::chrono::milliseconds(std::min(timeoutMs, kDeadWaitMs)));
    return false;
}

const NDIlib_source_t *Runtime::currentSources(NDIlib_find_instance_t handle, std::uint32_t *count)
{
    const std::shared_ptr<Finder> finder = finderOf(handle);
    if (finder)
        return finder->current(count);
    m_truth.write("dead", -1, kDeadFinder, "find_current");
    if (count != nullptr)
        *count = 0;
    return nullptr;
}

void Runtime::destroyFinder(NDIlib_find_instance_t handle)
{
    if (handle == nullptr)
        return;
    std::shared_ptr<Finder> finder;
    {
        const std::lock_guard<std::shared_mutex> lock(m_handlesMutex);
        const auto found = m_finders.find(numberOf(handle));
        if (found != m_finders.end()) {
            finder = std::move(found->second);
            m_finders.erase(found);
        }
    }
    if (finder)
        finder->close();
    else
        m_truth.write("dead", -1, kDeadFinder, "find_destroy");
}

NDIlib_recv_instance_t Runtime::createReceiver(const NDIlib_recv_create_v3_t *settings)
{
    if (!m_scenario || m_scenario->receiverFails)
        return nullptr;
    const NDIlib_recv_create_v3_t wanted = settings != nullptr ? *settings : NDIlib_recv_create_v3_t();
    const NDIlib_source_t &address = wanted.source_to_connect_to;
    Source *source = findSource(address.p_ndi_name, address.p_url_address);

    Receiver::Settings receiver;
    receiver.joinNs = steadyNowNs() + m_scenario->connectNs;
    receiver.wantsVideo =
        wanted.bandwidth != NDIlib_recv_bandwidth_audio_only && wanted.bandwidth != NDIlib_recv_bandwidth_metadata_only;
    receiver.wantsAudio = wanted.bandwidth != NDIlib_recv_bandwidth_metadata_only;
    receiver.limits.video = static_cast<std::size_t>(m_scenario->queueFrames);
    const std::int32_t blocks = source == nullptr ? 1 : source->spec().audio.blocksPerFrame;
    receiver.limits.audio = receiver.limits.video * static_cast<std::size_t>(std::max(blocks, 1));

    Connection connection;
    connection.source = source;
    std::uintptr_t handle = 0;
    {
        const std::lock_guard<std::shared_mutex> lock(m_handlesMutex);
        receiver.ordinal = static_cast<int>(m_receiversMade);
        handle = kReceiverTag + kHandleStep * ++m_receiversMade;
        std::unique_ptr<Feed> feed;
        if (m_scenario->unpaced && source != nullptr)
            feed = source->makeFeed(receiver.ordinal);
        connection.receiver = std::make_shared<Receiver>(receiver, m_truth, std::move(feed));
        m_receivers.emplace(handle, connection);
    }
    if (source != nullptr && !m_scenario->unpaced)
        source->add(connection.receiver, receiver.joinNs);
    const std::ptrdiff_t sourceOrdinal =
        source == nullptr ? -1 : std::distance(m_scenario->sources.data(), &source->spec());
    m_truth.write("create", receiver.ordinal, sourceOrdinal, "");
    return handleOf<NDIlib_recv_instance_t>(handle);
}

NDIlib_frame_type_e Runtime::capture(NDIlib_recv_instance_t handle, NDIlib_video_frame_v2_t *video,
                                     NDIlib_audio_frame_v2_t *audio, NDIlib_metadata_frame_t *metadata,
                                     std::uint32_t timeoutMs)
{
    m_crash.pass(CrashCall::capture);
    const std::shared_ptr<Receiver> receiver = receiverOf(handle);
    if (receiver)
        return static_cast<NDIlib_frame_type_e>(receiver->capture(video, audio, metadata, timeoutMs));
    countDead(handle, kDeadCapture, "capture");
    std::this_thread::sleep_for(std::chrono::milliseconds(std::min(timeoutMs, kDeadWaitMs)));
    return NDIlib_frame_type_none;
}

void Runtime::freeVideo(NDIlib_recv_instance_t handle, const NDIlib_video_frame_v2_t *frame)
{
    if (const std::shared_ptr<Receiver> receiver = receiverOf(handle))
        receiver->freeVideo(frame);
    else
        countDead(handle, kDeadFreeVideo, "free_video");
}

void Runtime::freeAudio(NDIlib_recv_instance_t handle, const NDIlib_audio_frame_v2_t *frame)
{
    if (const std::shared_ptr<Receiver> receiver = receiverOf(handle))
        receiver->freeAudio(frame);
    else
        countDead(handle, kDeadFreeAudio, "free_audio");
}

void Runtime::performance(NDIlib_recv_instance_t handle, NDIlib_recv_performance_t *total,
                          NDIlib_recv_performance_t *dropped)
{
    if (const std::shared_ptr<Receiver> receiver = receiverOf(handle)) {
        receiver->performance(total, dropped);
        return;
    }
    countDead(handle, kDeadPerformance, "performance");
    if (total != nullptr)
        *total = {};
    if (dropped != nullptr)
        *dropped = {};
}

void Runtime::destroyReceiver(NDIlib_recv_instance_t handle)
{
    if (handle == nullptr)
        return;
    Connection connection;
    {
        const std::lock_guard<std::shared_mutex> lock(m_handlesMutex);
        const auto found = m_receivers.find(numberOf(handle));
        if (found != m_receivers.end()) {
            connection = std::move(found->second);
            m_receivers.erase(found);
        }
    }
    if (!connection.receiver) {
        countDead(handle, kDeadDestroy, "destroy");
        return;
    }
    if (connection.source != nullptr)
        connection.source->remove(connection.receiver.get());
    const std::int64_t unfreed = connection.receiver->close();
    m_truth.write("destroy", connection.receiver->ordinal(), unfreed, "");
}

Source *Runtime::findSource(const char *name, const char *url) const
{
    const bool hasName = name != nullptr && *name != '\0';
    const bool hasUrl = url != nullptr && *url != '\0';
    if (hasName) {
        const auto [first, last] = m_byName.equal_range(name);
        if (first == last)
            return nullptr;
        const auto both = std::find_if(first, last, [this, hasUrl, url](const auto &entry) {
            return hasUrl && m_scenario->sources[entry.second].url == url;
        });
        return m_sources[(both != last ? both : first)->second].get();
    }
    if (!hasUrl)
        return nullptr;
    const auto found = m_byUrl.find(url);
    return found == m_byUrl.end() ? nullptr : m_sources[found->second].get();
}

std::shared_ptr<Receiver> Runtime::receiverOf(NDIlib_recv_instance_t handle) const
{
    const std::shared_lock<std::shared_mutex> lock(m_handlesMutex);
    const auto found = m_receivers.find(numberOf(handle));
    return found == m_receivers.end() ? nullptr : found->second.receiver;
}

std::shared_ptr<Finder> Runtime::finderOf(NDIlib_find_instance_t handle) const
{
    const std::shared_lock<std::shared_mutex> lock(m_handlesMutex);
    const auto found = m_finders.find(numberOf(handle));
    return found == m_finders.end() ? nullptr : found->second;
}

/// Says which receiver it was while it lived; -1 for a handle that never came from here.
void Runtime::countDead(NDIlib_recv_instance_t handle, std::int64_t call, const char *name)
{
    std::int64_t ordinal = -1;
    {
        const std::shared_lock<std::shared_mutex> lock(m_handlesMutex);
        const std::uintptr_t since = numberOf(handle) - kReceiverTag;
        if (since > 0 && since % kHandleStep == 0 && since / kHandleStep <= m_receiversMade)
            ordinal = static_cast<std::int64_t>(since / kHandleStep) - 1;
    }
    m_truth.write("dead", ordinal, call, name);
}

} // namespace loopback
