#include "loopback/finder.h"

#include "loopback/platform.h"

#include <algorithm>
#include <cstring>

namespace loopback {
namespace {

/// How soon a source that vanishes on its own clock is noticed: that clock can start at any time.
constexpr std::int64_t kVanishPollNs = 20 * kNsPerMs;

std::unique_ptr<char[]> copyOf(const std::string &text)
{
    auto copy = std::make_unique<char[]>(text.size() + 1);
    std::memcpy(copy.get(), text.c_str(), text.size() + 1);
    return copy;
}

/// `timeNs` is a time of change: keeps the earliest that is still to come.
void noteChange(std::int64_t timeNs, std::int64_t nowNs, std::int64_t &changeNs)
{
    if (timeNs > nowNs)
        changeNs = std::min(changeNs, timeNs);
}

} // namespace

Finder::Finder(const Scenario &scenario, const std::vector<std::unique_ptr<Source>> &sources, std::int64_t createdNs)
    : m_scenario(scenario), m_sources(sources), m_createdNs(createdNs)
{
    m_anyVanish = std::any_of(sources.begin(), sources.end(), [](const auto &source) { return source->canVanish(); });
}

bool Finder::wait(std::uint32_t timeoutMs)
{
    const std::int64_t deadlineNs = steadyNowNs() + std::int64_t{timeoutMs} * kNsPerMs;
    std::unique_lock<std::mutex> lock(m_mutex);
    dropList();
    for (;;) {
        if (m_closed)
            return false;
        const std::int64_t nowNs = steadyNowNs();
        std::int64_t changeNs = INT64_MAX;
        Visible visible = visibleAt(nowNs, changeNs);
        if (m_first || visible != m_reported) {
            m_first = false;
            m_reported = std::move(visible);
            return true;
        }
        if (nowNs >= deadlineNs)
            return false;
        if (m_anyVanish)
            changeNs = std::min(changeNs, nowNs + kVanishPollNs);
        waitUntilNs(m_closing, lock, std::min(deadlineNs, changeNs));
    }
}

const NDIlib_source_t *Finder::current(std::uint32_t *count)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    dropList();
    std::int64_t changeNs = INT64_MAX;
    const Visible visible = visibleAt(steadyNowNs(), changeNs);
    // One entry without a name behind the last: where a claimed number may lead a reader.
    m_list = std::make_unique<NDIlib_source_t[]>(visible.size() + 1);
    for (std::size_t i = 0; i < visible.size(); ++i) {
        const SourceSpec &spec = m_scenario.sources[visible[i]];
        m_texts.push_back(copyOf(spec.name));
        m_list[i].p_ndi_name = m_texts.back().get();
        m_texts.push_back(copyOf(spec.url));
        m_list[i].p_url_address = m_texts.back().get();
    }
    if (count != nullptr)
        *count = m_scenario.claimedSources.value_or(static_cast<std::uint32_t>(visible.size()));
    return m_list.get();
}

void Finder::close()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_closed = true;
        dropList();
    }
    m_closing.notify_all();
}

/// The texts are spoilt before they go, so that a list used for too long is noticed.
void Finder::dropList()
{
    for (const auto &text : m_texts) {
        if (text[0] != '\0')
            text[0] = '?';
    }
    m_texts.clear();
    m_list.reset();
}

Finder::Visible Finder::visibleAt(std::int64_t nowNs, std::int64_t &changeNs) const
{
    Visible visible;
    for (std::size_t i = 0; i < m_sources.size(); ++i) {
        const bool vanished = m_sources[i]->canVanish() && m_sources[i]->isVanished(nowNs, changeNs);
        if (isListed(i, nowNs - m_createdNs, changeNs) && !vanished)
            visible.push_back(i);
    }
    return visible;
}

/// By the finder's own clock; `sinceNs` is its time, `changeNs` the steady clock's.
bool Finder::isListed(std::size_t index, std::int64_t sinceNs, std::int64_t &changeNs) const
{
    const SourceSpec &spec = m_scenario.sources[index];
    const std::int64_t nowNs = m_createdNs + sinceNs;
    const std::int64_t appearNs = m_scenario.appearNs(index);
    noteChange(m_createdNs + appearNs, nowNs, changeNs);
    if (spec.disappearNs)
        noteChange(m_createdNs + *spec.disappearNs, nowNs, changeNs);
    if (sinceNs < appearNs || (spec.disappearNs && sinceNs >= *spec.disappearNs))
        return false;
    const ChurnSpec &churn = spec.churn;
    if (churn.periodNs == 0 || sinceNs >= churn.untilNs)
        return true;
    if (sinceNs < churn.fromNs) {
        noteChange(m_createdNs + churn.fromNs + churn.periodNs, nowNs, changeNs);
        return true;
    }
    const std::int64_t period = (sinceNs - churn.fromNs) / churn.periodNs;
    const std::int64_t nextNs = std::min(churn.fromNs + (period + 1) * churn.periodNs, churn.untilNs);
    noteChange(m_createdNs + nextNs, nowNs, changeNs);
    return period % 2 == 0;
}

} // namespace loopback
