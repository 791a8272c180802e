#include "ndi/sourcefinder.h"

#include "ndi/ndilib.h"
#include "ndi/overflowstack.h"

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
    const OverflowStack overflowStack;
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
    m_previous = std::exchange(m_current, SourceList(list, found));
    count = m_current.count();
    sources = m_current.data();
    emit finished();
    emit didFindNIDSources(sources, count);
}
