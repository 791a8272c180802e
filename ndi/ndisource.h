#pragma once

#include "ndi/nditypes.h"

#include <QByteArray>

/// A source's name and address in bytes of our own: the runtime's strings live only until its finder
/// is queried again, these as long as the object. Both are UTF-8, or null where the runtime has none.
class NdiSource final {
public:
    NdiSource() = default;
    explicit NdiSource(const NDIlib_source_t &source) : m_name(source.p_ndi_name), m_url(source.p_url_address) {}

    QByteArray name() const { return m_name; }
    QByteArray url() const { return m_url; }

    /// The runtime's structure; its pointers are good while this object lives unchanged.
    NDIlib_source_t view() const
    {
        NDIlib_source_t source;
        source.p_ndi_name = m_name.isNull() ? nullptr : m_name.constData();
        source.p_url_address = m_url.isNull() ? nullptr : m_url.constData();
        return source;
    }

private:
    QByteArray m_name;
    QByteArray m_url;
};
