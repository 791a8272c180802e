#include "ndi/sourcefinder.h"

#include "ndi/ndilib.h"

#include <QMessageBox>

#include <utility>

namespace {

constexpr std::uint32_t searchTimeoutMs = 5000;

} // namespace

SourceFinder::SourceFinder()
{
    registerNdiMetaTypes();
    finder = NDIlib_find_create_v2();
    if (!finder) {
        QMessageBox::information(nullptr, tr("Error"), tr("Can not create NDI finder"), QMessageBox::Ok);
        emit didFindNIDSources(nullptr, finderFailed);
    }
}

SourceFinder::~SourceFinder()
{
    if (finder)
        NDIlib_find_destroy(finder);
}

void SourceFinder::start()
{
    count = 0;
    if (!finder) {
        emit finished();
        emit didFindNIDSources(nullptr, finderFailed);
        return;
    }
    if (!NDIlib_find_wait_for_sources(finder, searchTimeoutMs)) {
        emit finished();
        emit didFindNIDSources(nullptr, noSourceAppeared);
        return;
    }
    std::uint32_t found = 0;
    const NDIlib_source_t *const list = NDIlib_find_get_current_sources(finder, &found);
    Snapshot snapshot;
    for (std::uint32_t i = 0; list && i < found; ++i)
        snapshot.owned.append(NdiSource(list[i]));
    for (const NdiSource &source : qAsConst(snapshot.owned))
        snapshot.array.append(source.view());
    m_previous = std::exchange(m_current, std::move(snapshot));
    count = m_current.array.size();
    sources = count > 0 ? m_current.array.constData() : nullptr;
    emit finished();
    emit didFindNIDSources(sources, count);
}
