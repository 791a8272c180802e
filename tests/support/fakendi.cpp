#include "tests/support/fakendi.h"

#include <QThread>

#include <map>
#include <memory>
#include <mutex>

namespace {

struct Receiver {
    std::size_t position = 0;
    int captures = 0;
    int outstandingVideo = 0;
    int outstandingAudio = 0;
};

struct State {
    std::mutex mutex; // guards everything below
    std::vector<FakeFrame> script;
    bool initializeFails = false;
    bool finderFails = false;
    bool receiverFails = false;
    QVector<QVector<QByteArray>> lists;
    int listsGiven = 0;
    std::vector<std::vector<char>> liveNames;
    std::vector<NDIlib_source_t> liveList;
    std::function<void(int)> onCapture;
    FakeNdi::Counts counts;
    NDIlib_recv_create_v3_t lastSettings;
    QByteArray lastSourceName;
    QByteArray lastReceiverName;
    std::map<NDIlib_recv_instance_t, Receiver> receivers;
    std::uintptr_t nextHandle = 16;
};

std::unique_ptr<State> state;

bool isReset(const NDIlib_video_frame_v2_t &video)
{
    return video.xres == 0 && video.yres == 0 && !video.p_data && video.frame_rate_N == 30000
           && video.frame_rate_D == 1001 && video.FourCC == NDIlib_FourCC_video_type_UYVY;
}

bool initialize()
{
    const std::lock_guard<std::mutex> locker(state->mutex);
    ++state->counts.initialized;
    return !state->initializeFails;
}

void destroy()
{
    const std::lock_guard<std::mutex> locker(state->mutex);
    ++state->counts.libraryLeft;
}

NDIlib_find_instance_t findCreate(const NDIlib_find_create_t *)
{
    const std::lock_guard<std::mutex> locker(state->mutex);
    if (state->finderFails)
        return nullptr;
    ++state->counts.findersCreated;
    state->listsGiven = 0;
    return reinterpret_cast<NDIlib_find_instance_t>(std::uintptr_t(8));
}

/// What was given before is no more. The mutex is held.
void spoilLastList()
{
    for (std::vector<char> &name : state->liveNames)
        std::fill(name.begin(), name.end(), '#');
    state->liveNames.clear();
    state->liveList.clear();
}

bool findWaitForSources(NDIlib_find_instance_t finder, std::uint32_t)
{
    const std::lock_guard<std::mutex> locker(state->mutex);
    ++state->counts.waits;
    spoilLastList();
    if (!finder)
        ++state->counts.misuses;
    return state->listsGiven < state->lists.size();
}

const NDIlib_source_t *findGetCurrentSources(NDIlib_find_instance_t finder, std::uint32_t *count)
{
    const std::lock_guard<std::mutex> locker(state->mutex);
    if (!finder)
        ++state->counts.misuses;
    spoilLastList();
    const QVector<QByteArray> list = state->lists.value(state->listsGiven++);
    std::vector<std::vector<char>> names;
    std::vector<NDIlib_source_t> sources;
    for (const QByteArray &name : list) {
        names.emplace_back(name.constData(), name.constData() + name.size() + 1);
        NDIlib_source_t source;
        source.p_ndi_name = names.back().data();
        sources.push_back(source);
    }
    state->liveNames = std::move(names);
    state->liveList = std::move(sources);
    *count = std::uint32_t(state->liveList.size());
    return state->liveList.data();
}

void findDestroy(NDIlib_find_instance_t)
{
    const std::lock_guard<std::mutex> locker(state->mutex);
    ++state->counts.findersDestroyed;
}

NDIlib_recv_instance_t recvCreate(const NDIlib_recv_create_v3_t *settings)
{
    const std::lock_guard<std::mutex> locker(state->mutex);
    ++state->counts.created;
    state->lastSettings = *settings;
    state->lastSourceName = settings->source_to_connect_to.p_ndi_name;
    state->lastReceiverName = settings->p_ndi_recv_name;
    if (state->receiverFails)
        return nullptr;
    const auto handle = reinterpret_cast<NDIlib_recv_instance_t>(state->nextHandle);
    state->nextHandle += 16;
    state->receivers[handle] = Receiver();
    return handle;
}

NDIlib_frame_type_e recvCapture(NDIlib_recv_instance_t handle, NDIlib_video_frame_v2_t *video,
                                NDIlib_audio_frame_v2_t *audio, NDIlib_metadata_frame_t *metadata, std::uint32_t)
{
    std::unique_lock<std::mutex> locker(state->mutex);
    ++state->counts.captures;
    const auto found = state->receivers.find(handle);
    if (found == state->receivers.end() || metadata || !isReset(*video) || audio->no_samples != 0) {
        ++state->counts.misuses;
        return NDIlib_frame_type_none;
    }
    Receiver &receiver = found->second;
    FakeFrame frame;
    if (receiver.position < state->script.size())
        frame = state->script[receiver.position++];
    const int number = receiver.captures++;
    if (frame.type == NDIlib_frame_type_video) {
        *video = frame.video;
        ++receiver.outstandingVideo;
    }
    if (frame.type == NDIlib_frame_type_audio) {
        audio->no_samples = 1600;
        ++receiver.outstandingAudio;
    }
    const std::function<void(int)> onCapture = state->onCapture;
    locker.unlock();
    if (onCapture)
        onCapture(number);
    if (frame.type == NDIlib_frame_type_none)
        QThread::yieldCurrentThread(); // a script at its end must not starve the others
    return frame.type;
}

void recvFreeVideo(NDIlib_recv_instance_t handle, const NDIlib_video_frame_v2_t *)
{
    const std::lock_guard<std::mutex> locker(state->mutex);
    ++state->counts.videoFreed;
    const auto found = state->receivers.find(handle);
    if (found == state->receivers.end() || --found->second.outstandingVideo < 0)
        ++state->counts.misuses;
}

void recvFreeAudio(NDIlib_recv_instance_t handle, const NDIlib_audio_frame_v2_t *)
{
    const std::lock_guard<std::mutex> locker(state->mutex);
    ++state->counts.audioFreed;
    const auto found = state->receivers.find(handle);
    if (found == state->receivers.end() || --found->second.outstandingAudio < 0)
        ++state->counts.misuses;
}

void recvDestroy(NDIlib_recv_instance_t handle)
{
    const std::lock_guard<std::mutex> locker(state->mutex);
    ++state->counts.destroyed;
    const auto found = state->receivers.find(handle);
    if (found == state->receivers.end() || found->second.outstandingVideo != 0 || found->second.outstandingAudio != 0) {
        ++state->counts.misuses;
        return;
    }
    state->receivers.erase(found);
}

NdiFunctions fakeFunctions()
{
    NdiFunctions functions;
    functions.initialize = initialize;
    functions.destroy = destroy;
    functions.findCreate = findCreate;
    functions.findWaitForSources = findWaitForSources;
    functions.findGetCurrentSources = findGetCurrentSources;
    functions.findDestroy = findDestroy;
    functions.recvCreate = recvCreate;
    functions.recvCapture = recvCapture;
    functions.recvFreeVideo = recvFreeVideo;
    functions.recvFreeAudio = recvFreeAudio;
    functions.recvDestroy = recvDestroy;
    return functions;
}

} // namespace

FakeFrame FakeFrame::ofType(int type)
{
    FakeFrame frame;
    frame.type = NDIlib_frame_type_e(type);
    return frame;
}

FakeFrame FakeFrame::ofVideo(int width, int height, int rateN, int rateD)
{
    FakeFrame frame = ofType(NDIlib_frame_type_video);
    frame.video.xres = width;
    frame.video.yres = height;
    frame.video.frame_rate_N = rateN;
    frame.video.frame_rate_D = rateD;
    return frame;
}

FakeNdi::FakeNdi()
{
    static const NdiFunctions functions = fakeFunctions();
    state = std::make_unique<State>();
    overrideNdiFunctions(&functions);
}

FakeNdi::~FakeNdi()
{
    overrideNdiFunctions(nullptr);
    state.reset();
}

void FakeNdi::setScript(std::vector<FakeFrame> script)
{
    const std::lock_guard<std::mutex> locker(state->mutex);
    state->script = std::move(script);
}

void FakeNdi::setInitializeFails(bool fails)
{
    const std::lock_guard<std::mutex> locker(state->mutex);
    state->initializeFails = fails;
}

void FakeNdi::setFinderFails(bool fails)
{
    const std::lock_guard<std::mutex> locker(state->mutex);
    state->finderFails = fails;
}

void FakeNdi::setReceiverFails(bool fails)
{
    const std::lock_guard<std::mutex> locker(state->mutex);
    state->receiverFails = fails;
}

void FakeNdi::setSourceLists(const QVector<QVector<QByteArray>> &lists)
{
    const std::lock_guard<std::mutex> locker(state->mutex);
    state->lists = lists;
}

void FakeNdi::setOnCapture(std::function<void(int)> onCapture)
{
    const std::lock_guard<std::mutex> locker(state->mutex);
    state->onCapture = std::move(onCapture);
}

FakeNdi::Counts FakeNdi::counts() const
{
    const std::lock_guard<std::mutex> locker(state->mutex);
    return state->counts;
}

NDIlib_recv_create_v3_t FakeNdi::lastSettings() const
{
    const std::lock_guard<std::mutex> locker(state->mutex);
    return state->lastSettings;
}

QByteArray FakeNdi::lastSourceName() const
{
    const std::lock_guard<std::mutex> locker(state->mutex);
    return state->lastSourceName;
}

QByteArray FakeNdi::lastReceiverName() const
{
    const std::lock_guard<std::mutex> locker(state->mutex);
    return state->lastReceiverName;
}
