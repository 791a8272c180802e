#include "probes/ipconfigparser.h"

#include <cstdlib>

namespace {

void require(bool holds)
{
    if (!holds)
        std::abort();
}

bool isSwitch(const QString &text)
{
    return text.isEmpty() || text == QLatin1String("Enabled") || text == QLatin1String("Disabled");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    const QString text = QString::fromLatin1(reinterpret_cast<const char *>(data), static_cast<int>(size));
    const NetworkAdapters adapters = parseIpconfig(text);
    for (const NetworkAdapterInfo &adapter : adapters) {
        require(!adapter.name.isEmpty() && !adapter.name.contains(QLatin1Char(':'))
                && !adapter.name.contains(QLatin1Char('\n')));
        require(isSwitch(adapter.autoConfiguration) && isSwitch(adapter.dhcp) && adapter.linkSpeed.isEmpty());
        // What is shown stands in the text, on one line.
        for (const QString &value :
             {adapter.description, adapter.ipv4Address, adapter.subnetMask, adapter.defaultGateway})
            require(text.contains(value) && value == value.trimmed() && !value.contains(QLatin1Char('\n')));
    }
    return 0;
}
