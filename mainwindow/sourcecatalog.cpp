#include "mainwindow/sourcecatalog.h"

void SourceCatalog::replace(const NDIlib_source_t *sources, int count)
{
    m_sources = SourceList(sources, static_cast<std::uint32_t>(qMax(count, 0)));
    m_infos.assign(static_cast<std::size_t>(m_sources.count()), SourceInfo());
    for (std::size_t i = 0; i < m_infos.size(); ++i)
        m_infos[i].index = static_cast<int>(i);
}

QStringList SourceCatalog::names() const
{
    QStringList all;
    for (int i = 0; i < count(); ++i)
        all.append(name(i));
    return all;
}

void SourceCatalog::setInfo(const SourceInfo &info)
{
    m_infos[static_cast<std::size_t>(info.index)] = info;
}
