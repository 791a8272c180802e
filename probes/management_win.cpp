#include "probes/management_win.h"

#include <QDeadlineTimer>

#include <windows.h>

#include <oleauto.h>
#include <wbemidl.h>

#include <memory>

namespace {

/// COM on the calling thread, from here to the end of the scope.
class ComScope final {
public:
    // A thread that has windows may have chosen the other threading model before: it works as well.
    ComScope() : m_result(CoInitializeEx(nullptr, COINIT_MULTITHREADED)) {}
    ~ComScope()
    {
        if (SUCCEEDED(m_result))
            CoUninitialize();
    }
    Q_DISABLE_COPY_MOVE(ComScope)

    bool isUsable() const { return SUCCEEDED(m_result) || m_result == RPC_E_CHANGED_MODE; }

private:
    HRESULT m_result;
};

struct Releaser {
    void operator()(IUnknown *object) const { object->Release(); }
};
template <typename Interface>
using ComPointer = std::unique_ptr<Interface, Releaser>;

/// A text for an automation call.
class AutomationText final {
public:
    explicit AutomationText(const QString &text)
        : m_text(SysAllocStringLen(reinterpret_cast<const OLECHAR *>(text.utf16()), static_cast<UINT>(text.size())))
    {
    }
    ~AutomationText() { SysFreeString(m_text); }
    Q_DISABLE_COPY_MOVE(AutomationText)

    BSTR get() const { return m_text; }

private:
    BSTR m_text;
};

ComPointer<IWbemServices> connectToManagement()
{
    void *made = nullptr;
    if (FAILED(CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator, &made)))
        return nullptr;
    const ComPointer<IWbemLocator> locator(static_cast<IWbemLocator *>(made));
    IWbemServices *services = nullptr;
    const AutomationText name(QStringLiteral("root\\cimv2"));
    if (FAILED(locator->ConnectServer(name.get(), nullptr, nullptr, nullptr, WBEM_FLAG_CONNECT_USE_MAX_WAIT, nullptr,
                                      nullptr, &services)))
        return nullptr;
    // Without it Windows refuses the query below; that is where a failure shows.
    CoSetProxyBlanket(services, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CALL,
                      RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
    return ComPointer<IWbemServices>(services);
}

/// The object's property, if it is text.
std::optional<QString> textOf(IWbemClassObject *object, const wchar_t *property)
{
    VARIANT value;
    VariantInit(&value);
    std::optional<QString> text;
    if (SUCCEEDED(object->Get(property, 0, &value, nullptr, nullptr)) && value.vt == VT_BSTR)
        text = QString::fromWCharArray(value.bstrVal, static_cast<int>(SysStringLen(value.bstrVal)));
    VariantClear(&value);
    return text;
}

std::optional<QString> answer(const QString &query, const wchar_t *property, const std::atomic<bool> &abort)
{
    constexpr long sliceMs = 100; // how soon an abort is seen
    const ComPointer<IWbemServices> services = connectToManagement();
    if (!services || abort)
        return std::nullopt;
    const AutomationText language(QStringLiteral("WQL"));
    const AutomationText text(query);
    IEnumWbemClassObject *found = nullptr;
    if (FAILED(services->ExecQuery(language.get(), text.get(), WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY,
                                   nullptr, &found)))
        return std::nullopt;
    const ComPointer<IEnumWbemClassObject> results(found);
    const QDeadlineTimer deadline(std::chrono::seconds(30));
    while (!abort && !deadline.hasExpired()) {
        IWbemClassObject *next = nullptr;
        ULONG count = 0;
        const HRESULT result = results->Next(sliceMs, 1, &next, &count);
        const ComPointer<IWbemClassObject> object(count == 1 ? next : nullptr);
        if (object) {
            std::optional<QString> value = textOf(object.get(), property);
            if (value)
                return value;
        } else if (result != WBEM_S_TIMEDOUT) {
            break;
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<QString> managementText(const QString &query, const wchar_t *property, const std::atomic<bool> &abort)
{
    const ComScope com;
    if (!com.isUsable())
        return std::nullopt;
    // Once per process; the later calls are refused, which does no harm.
    CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_DEFAULT, RPC_C_IMP_LEVEL_IMPERSONATE, nullptr,
                         EOAC_NONE, nullptr);
    return answer(query, property, abort);
}
