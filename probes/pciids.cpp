#include "probes/pciids.h"

namespace {

QString digits(quint16 number)
{
    return QStringLiteral("%1").arg(number, 4, 16, QLatin1Char('0'));
}

/// The text of the line that begins at start, without what stands before the name.
QString nameInLine(const QByteArray &text, int start)
{
    const int end = text.indexOf('\n', start);
    return QString::fromUtf8(text.mid(start, end < 0 ? -1 : end - start)).trimmed();
}

} // namespace

// Vendors begin at the margin, their devices one tabulator in, subsystems two:
//   10de  NVIDIA Corporation
//   <tab>2684  AD102 [GeForce RTX 4090]
QString pciDeviceName(const QByteArray &pciIds, quint16 vendor, quint16 device)
{
    const QByteArray vendorKey = '\n' + digits(vendor).toLatin1() + "  ";
    const QByteArray text = '\n' + pciIds;
    const int vendorAt = text.indexOf(vendorKey);
    if (vendorAt < 0)
        return digits(vendor) + QLatin1Char(':') + digits(device);
    const QString vendorName = nameInLine(text, vendorAt + vendorKey.size());

    const QByteArray deviceKey = '\t' + digits(device).toLatin1() + "  ";
    int line = text.indexOf('\n', vendorAt + 1) + 1;
    while (line > 0 && line < text.size() && (text.at(line) == '\t' || text.at(line) == '#')) {
        if (text.mid(line, deviceKey.size()) == deviceKey)
            return vendorName + QLatin1Char(' ') + nameInLine(text, line + deviceKey.size());
        line = text.indexOf('\n', line) + 1;
    }
    return vendorName + QLatin1Char(' ') + digits(device);
}
