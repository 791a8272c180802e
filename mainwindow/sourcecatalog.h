#pragma once

#include "ndi/sourcelist.h"

#include <QString>
#include <QStringList>

#include <vector>

/// What is known of a source's video.
struct SourceInfo {
    quint32 fourCC = 0;
    int width = 0;          ///< pixels; 0: not known yet
    int height = 0;         ///< pixels
    double frameRate = 0.0; ///< nominal, frames per second
    int index = 0;          ///< place in the list
};

/// The sources of the last search in memory of our own, and what the probes found out about them.
/// GUI thread. The runtime's list may be gone or replaced at any time; nothing here refers to it.
class SourceCatalog final {
public:
    /// Takes the place of the former list; all facts are unknown again. count may be 0 or below: no source.
    void replace(const NDIlib_source_t *sources, int count);
    void clear() { replace(nullptr, 0); }

    int count() const { return m_sources.count(); }
    bool contains(int index) const { return index >= 0 && index < count(); }
    /// The rest asks for an index that the list contains.
    const NdiSource &source(int index) const { return m_sources.at(index); }
    QString name(int index) const { return QString::fromUtf8(source(index).name()); }
    QString url(int index) const { return QString::fromUtf8(source(index).url()); }
    const SourceInfo &info(int index) const { return m_infos[static_cast<std::size_t>(index)]; }
    void setInfo(const SourceInfo &info);
    QStringList names() const;

private:
    SourceList m_sources;
    std::vector<SourceInfo> m_infos;
};
