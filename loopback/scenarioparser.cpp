#include "loopback/jsonobject.h"
#include "loopback/scenario.h"

#include <string>

namespace loopback {
namespace {

using Json = nlohmann::json;

constexpr double kMostFramesPerSecond = 10000.0; ///< what can be paced; frames may declare anything
constexpr double kLeastFramesPerSecond = 0.001;
constexpr Rate kFallbackRate{30000, 1001}; ///< paces what declares an impossible rate
constexpr std::int64_t kMostSources = 100000;
constexpr std::int64_t kMostFrameNumber = std::int64_t{1} << 40;

bool canPace(Rate rate)
{
    if (rate.n <= 0 || rate.d <= 0)
        return false;
    const double perSecond = static_cast<double>(rate.n) / rate.d;
    return perSecond >= kLeastFramesPerSecond && perSecond <= kMostFramesPerSecond;
}

/// rateN, rateD, clockRateN and clockRateD of a source or a rate event.
void readRates(JsonObject &object, Rate &declared, Rate &clock)
{
    declared.n = object.integer32("rateN", declared.n);
    declared.d = object.integer32("rateD", declared.d);
    const Rate fallback = canPace(declared) ? declared : kFallbackRate;
    clock.n = object.integer32("clockRateN", fallback.n, 1);
    clock.d = object.integer32("clockRateD", object.has("clockRateN") ? 1 : fallback.d, 1);
    if (!canPace(clock))
        object.fail("clockRateN", "gives a rate outside 0.001 to 10000 frames per second");
}

/// Four characters, or the number itself for codes that no text can name.
std::uint32_t readFourCC(JsonObject &object, std::uint32_t otherwise)
{
    const char *key = "fourCC";
    const Json *value = object.find(key);
    if (value == nullptr)
        return otherwise;
    if (!value->is_string())
        return static_cast<std::uint32_t>(object.integer(key, 0, 0, 0xFFFFFFFF));
    const auto text = value->get<std::string>();
    if (text.size() != 4)
        object.fail(key, value->dump() + " does not have four characters");
    std::uint32_t code = 0;
    for (std::size_t i = 0; i < 4; ++i)
        code |= std::uint32_t{static_cast<unsigned char>(text[i])} << (8U * i);
    return code;
}

AudioSpec readAudio(const Json &value, const std::string &path)
{
    JsonObject object(value, path);
    AudioSpec audio;
    audio.blocksPerFrame = object.integer32("blocksPerFrame", 1, 0, 100);
    audio.samples = object.integer32("samples", 0, 0, 1'000'000);
    audio.sampleRate = object.integer32("sampleRate", 48000, 1, 1'000'000);
    audio.channels = object.integer32("channels", 2, 1, 64);
    object.end();
    return audio;
}

MetadataSpec readMetadata(const Json &value, const std::string &path)
{
    JsonObject object(value, path);
    MetadataSpec metadata;
    metadata.everyFrames = object.integer("everyFrames", 1, 0, kMostFrameNumber);
    metadata.text = object.text("text", "<loopback/>");
    object.end();
    return metadata;
}

JitterSpec readJitter(const Json &value, const std::string &path)
{
    JsonObject object(value, path);
    JitterSpec jitter;
    object.need("kind");
    jitter.kind = static_cast<JitterKind>(object.word("kind", {"none", "uniform", "gaussian", "burst"}, 0));
    if (jitter.kind == JitterKind::uniform || jitter.kind == JitterKind::burst) {
        object.need("amplitudeMs");
        jitter.amplitudeNs = object.milliseconds("amplitudeMs", 0);
    }
    if (jitter.kind == JitterKind::gaussian) {
        object.need("sigmaMs");
        jitter.sigmaNs = object.milliseconds("sigmaMs", 0);
    }
    if (jitter.kind == JitterKind::burst)
        jitter.everyFrames = object.integer("everyFrames", 60, 1, kMostFrameNumber);
    jitter.seed = static_cast<std::uint64_t>(object.integer("seed", 1, 0, INT64_MAX));
    object.end();
    return jitter;
}

ChurnSpec readChurn(const Json &value, const std::string &path)
{
    JsonObject object(value, path);
    ChurnSpec churn;
    object.need("periodMs");
    churn.periodNs = object.milliseconds("periodMs", 0);
    if (churn.periodNs < kNsPerMs)
        object.fail("periodMs", "must be at least 1");
    churn.fromNs = object.milliseconds("fromMs", 0);
    churn.untilNs = object.milliseconds("untilMs", INT64_MAX);
    object.end();
    return churn;
}

void readSizeEvent(JsonObject &object, Event &event)
{
    object.need("width");
    object.need("height");
    event.width = object.integer32("width", 0);
    event.height = object.integer32("height", 0);
    if (object.has("fourCC"))
        event.fourCC = readFourCC(object, 0);
    event.stride = object.integer32("stride", 0);
    event.noData = object.boolean("noData", false);
}

Event readEvent(const Json &value, const std::string &path)
{
    JsonObject object(value, path);
    Event event;
    object.need("kind");
    event.kind = static_cast<EventKind>(object.word(
        "kind",
        {"drop", "stall", "burst", "error", "status", "unknown", "metadata", "size", "rate", "vanish", "zeroSize"}, 0));
    if (object.has("atMs") == object.has("atFrame"))
        throw ScenarioError(path, "needs either atMs or atFrame");
    if (object.has("atMs"))
        event.atNs = object.milliseconds("atMs", 0);
    else
        event.atFrame = object.integer("atFrame", 0, 0, kMostFrameNumber);
    switch (event.kind) {
    case EventKind::drop:
    case EventKind::burst:
    case EventKind::zeroSize:
        object.need("frames");
        event.frames = object.integer("frames", 1, 1, kMostFrameNumber);
        break;
    case EventKind::stall:
    case EventKind::vanish:
        object.need("ms");
        event.durationNs = object.milliseconds("ms", 0);
        break;
    case EventKind::error:
        if (object.has("receiver"))
            event.receiver = object.integer32("receiver", 0, 0);
        break;
    case EventKind::unknown:
        object.need("value");
        event.value = object.integer32("value", 0);
        break;
    case EventKind::metadata:
        event.text = object.text("text", "<loopback/>");
        break;
    case EventKind::size:
        readSizeEvent(object, event);
        break;
    case EventKind::rate:
        object.need("rateN");
        event.declaredRate.d = 1;
        readRates(object, event.declaredRate, event.clockRate);
        break;
    case EventKind::status:
        break;
    }
    object.end();
    return event;
}

void readFormat(JsonObject &object, SourceSpec &source)
{
    VideoFormat &format = source.format;
    format.width = object.integer32("width", format.width);
    format.height = object.integer32("height", format.height);
    format.fourCC = readFourCC(object, format.fourCC);
    format.stride = object.integer32("stride", 0);
    format.noData = object.boolean("noData", false);
    format.aspect = static_cast<float>(object.number("aspect", 0.0, -1e9, 1e9));
    format.frameFormat =
        static_cast<std::int32_t>(object.word("frameFormat", {"interleaved", "progressive", "field0", "field1"}, 1));
    if (object.has("rateN") && !object.has("rateD"))
        format.declaredRate.d = 1;
    readRates(object, format.declaredRate, source.clockRate);
}

void readTimes(JsonObject &object, SourceSpec &source)
{
    if (object.has("appearMs"))
        source.appearNs = object.milliseconds("appearMs", 0);
    if (object.has("disappearMs"))
        source.disappearNs = object.milliseconds("disappearMs", 0);
    source.startNs = object.milliseconds("startMs", 0);
    if (object.has("endMs"))
        source.endNs = object.milliseconds("endMs", 0);
}

/// Replaces every "%1" by `number`.
std::string numbered(std::string text, std::int64_t number)
{
    const std::string digits = std::to_string(number);
    for (std::size_t at = 0; (at = text.find("%1", at)) != std::string::npos; at += digits.size())
        text.replace(at, 2, digits);
    return text;
}

/// An address of its own for each source that gives none.
std::string defaultUrl(std::size_t index)
{
    const auto part = [index](unsigned shift) { return std::to_string((index >> shift) & 0xFFU); };
    return "10." + part(16) + '.' + part(8) + '.' + part(0) + ":5961";
}

void readSource(const Json &value, const std::string &path, std::vector<SourceSpec> &sources)
{
    JsonObject object(value, path);
    SourceSpec source;
    object.need("name");
    source.name = object.text("name", {});
    source.url = object.text("url", {});
    readFormat(object, source);
    readTimes(object, source);
    source.timestamps = object.boolean("timestamps", true);
    source.frameMetadata = object.text("frameMetadata", {});
    if (const Json *audio = object.find("audio"))
        source.audio = readAudio(*audio, object.place("audio"));
    if (const Json *metadata = object.find("metadata"))
        source.metadata = readMetadata(*metadata, object.place("metadata"));
    if (const Json *jitter = object.find("jitter"))
        source.jitter = readJitter(*jitter, object.place("jitter"));
    if (const Json *churn = object.find("churn"))
        source.churn = readChurn(*churn, object.place("churn"));
    if (const Json *events = object.find("events")) {
        if (!events->is_array())
            object.fail("events", "must be a list");
        for (std::size_t i = 0; i < events->size(); ++i)
            source.events.push_back(readEvent((*events)[i], object.place("events") + '[' + std::to_string(i) + ']'));
    }
    const std::int64_t repeat = object.integer("repeat", 1, 1, kMostSources);
    object.end();
    if (static_cast<std::int64_t>(sources.size()) + repeat > kMostSources)
        object.fail("repeat", "makes more than " + std::to_string(kMostSources) + " sources");
    for (std::int64_t number = 1; number <= repeat; ++number) {
        SourceSpec copy = source;
        if (object.has("repeat")) {
            copy.name = numbered(source.name, number);
            copy.url = numbered(source.url, number);
        }
        if (!object.has("url"))
            copy.url = defaultUrl(sources.size());
        sources.push_back(std::move(copy));
    }
}

CrashSpec readCrash(const Json &value, const std::string &path)
{
    JsonObject object(value, path);
    CrashSpec crash;
    object.need("kind");
    object.need("in");
    crash.kind = static_cast<CrashKind>(object.word("kind", {"nullWrite", "abort", "stackOverflow", "pureVirtual"}, 0));
    crash.call = static_cast<CrashCall>(object.word("in", {"initialize", "wait", "capture"}, 0));
    crash.number = object.integer("call", 1, 1, kMostFrameNumber);
    object.end();
    return crash;
}

Scenario readScenario(const Json &json)
{
    JsonObject object(json, {});
    Scenario scenario;
    scenario.initialize = object.boolean("initialize", true);
    scenario.finderFails = object.boolean("finderFails", false);
    scenario.receiverFails = object.boolean("receiverFails", false);
    scenario.unpaced = object.boolean("unpaced", false);
    scenario.connectNs = object.milliseconds("connectMs", scenario.connectNs);
    scenario.discoveryNs = object.milliseconds("discoveryMs", scenario.discoveryNs);
    scenario.discoveryStepNs = object.milliseconds("discoveryStepMs", scenario.discoveryStepNs);
    scenario.discoveryBatch = object.integer("discoveryBatch", 0, 0, kMostSources);
    scenario.queueFrames = object.integer32("queueFrames", scenario.queueFrames, 1, 1000);
    if (object.has("claimedSources"))
        scenario.claimedSources =
            static_cast<std::uint32_t>(object.integer("claimedSources", 0, kMostSources + 1, UINT32_MAX));
    if (const Json *crash = object.find("crash"))
        scenario.crash = readCrash(*crash, object.place("crash"));
    const Json *sources = object.find("sources");
    if (sources == nullptr)
        scenario.sources = defaultScenario().sources;
    else if (!sources->is_array())
        object.fail("sources", "must be a list");
    else {
        for (std::size_t i = 0; i < sources->size(); ++i)
            readSource((*sources)[i], "sources[" + std::to_string(i) + ']', scenario.sources);
    }
    object.end();
    return scenario;
}

/// "line 3, column 7" of the byte at which the JSON reader gave up (1-based).
std::string lineAndColumn(const std::string &text, std::size_t byte)
{
    std::size_t line = 1;
    std::size_t column = 1;
    for (std::size_t i = 0; i + 1 < byte && i < text.size(); ++i) {
        ++column;
        if (text[i] == '\n') {
            ++line;
            column = 1;
        }
    }
    return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

} // namespace

ScenarioResult parseScenario(const std::string &json)
{
    ScenarioResult result;
    try {
        result.scenario = readScenario(Json::parse(json));
    } catch (const ScenarioError &error) {
        result.error = error.what();
    } catch (const Json::parse_error &error) {
        result.error = lineAndColumn(json, error.byte) + ": not JSON";
    } catch (const Json::exception &error) {
        result.error = std::string("the file: ") + error.what();
    }
    return result;
}

} // namespace loopback
