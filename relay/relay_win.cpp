#include "relay/argumentquoting.h"
#include "relay/relay.h"

#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include <windows.h>

#include <aclapi.h>

namespace relay {

namespace {

struct HandleCloser {
    void operator()(void *handle) const noexcept { CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, HandleCloser>;

struct LocalFreer {
    void operator()(void *memory) const noexcept { LocalFree(memory); }
};

std::string systemError(const std::string &what)
{
    return what + ": Windows error " + std::to_string(GetLastError());
}

/// Empty when the bytes are no UTF-8.
std::wstring wide(const std::string &utf8)
{
    const int length = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), int(utf8.size()), nullptr, 0);
    std::wstring text(std::size_t(length), L'\0');
    MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), int(utf8.size()), &text[0], length);
    return text;
}

bool isFullPath(const std::wstring &path)
{
    return path.size() > 3
           && ((path[1] == L':' && (path[2] == L'\\' || path[2] == L'/')) || path.rfind(L"\\\\", 0) == 0);
}

/// Windows hands files with other endings (.bat, .cmd) to the command interpreter.
bool isProgram(const std::wstring &path)
{
    const std::wstring ending = path.size() > 4 ? path.substr(path.size() - 4) : std::wstring();
    return CompareStringOrdinal(ending.c_str(), -1, L".exe", -1, TRUE) == CSTR_EQUAL;
}

/// One of our standard handles in a form that the tool inherits; "NUL" when we have none.
Handle inheritable(DWORD standardHandle)
{
    HANDLE copy = nullptr;
    HANDLE own = GetStdHandle(standardHandle);
    const HANDLE self = GetCurrentProcess();
    if (own && own != INVALID_HANDLE_VALUE && DuplicateHandle(self, own, self, &copy, 0, TRUE, DUPLICATE_SAME_ACCESS))
        return Handle(copy);
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, nullptr, TRUE};
    copy = CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &attributes,
                       OPEN_EXISTING, 0, nullptr);
    // cppcheck-suppress resourceLeak ; the Handle closes it
    return Handle(copy == INVALID_HANDLE_VALUE ? nullptr : copy);
}

/// A job that takes everything in it along when its last handle, ours, is closed: by us or by our end.
Handle makeJob()
{
    Handle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    if (job && !SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof limits))
        job.reset();
    return job;
}

/// Lets a new process inherit these handles and no others.
class InheritedHandles final {
public:
    explicit InheritedHandles(std::vector<HANDLE> handles) : m_handles(std::move(handles))
    {
        SIZE_T bytes = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &bytes);
        m_memory.resize(bytes);
        m_isMade = InitializeProcThreadAttributeList(list(), 1, 0, &bytes);
        m_isUsable = m_isMade
                     && UpdateProcThreadAttribute(list(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, m_handles.data(),
                                                  m_handles.size() * sizeof(HANDLE), nullptr, nullptr);
    }
    ~InheritedHandles()
    {
        if (m_isMade)
            DeleteProcThreadAttributeList(list());
    }
    InheritedHandles(const InheritedHandles &) = delete;
    InheritedHandles &operator=(const InheritedHandles &) = delete;

    bool isUsable() const { return m_isUsable; }
    LPPROC_THREAD_ATTRIBUTE_LIST list() { return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(m_memory.data()); }

private:
    std::vector<HANDLE> m_handles;
    std::vector<unsigned char> m_memory;
    bool m_isMade = false;
    bool m_isUsable = false;
};

struct RunningTool {
    Handle process;
    Handle output; ///< the end that we read
};

/// Nothing, after a complaint, when it did not start.
std::optional<RunningTool> startTool(const std::wstring &path, std::wstring commandLine, HANDLE job)
{
    RunningTool tool;
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
    if (!CreatePipe(&readEnd, &writeEnd, nullptr, 0)) {
        complain(systemError("cannot make a pipe"));
        return std::nullopt;
    }
    tool.output.reset(readEnd);
    const Handle toolsOutput(writeEnd);
    SetHandleInformation(writeEnd, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    const Handle toolsInput = inheritable(STD_INPUT_HANDLE);
    const Handle toolsError = inheritable(STD_ERROR_HANDLE);
    InheritedHandles inherited({toolsInput.get(), writeEnd, toolsError.get()});
    if (!toolsInput || !toolsError || !inherited.isUsable()) {
        complain(systemError("cannot prepare the tool's start"));
        return std::nullopt;
    }

    STARTUPINFOEXW startup = {};
    startup.StartupInfo.cb = sizeof startup;
    startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    startup.StartupInfo.hStdInput = toolsInput.get();
    startup.StartupInfo.hStdOutput = writeEnd;
    startup.StartupInfo.hStdError = toolsError.get();
    startup.lpAttributeList = inherited.list();
    PROCESS_INFORMATION made = {};
    // The path is given by itself, so Windows does not look for the program in the command line.
    if (!CreateProcessW(path.c_str(), &commandLine[0], nullptr, nullptr, TRUE,
                        CREATE_SUSPENDED | EXTENDED_STARTUPINFO_PRESENT, nullptr, nullptr, &startup.StartupInfo,
                        &made)) {
        complain(systemError("cannot start the tool"));
        return std::nullopt;
    }
    tool.process.reset(made.hProcess);
    const Handle thread(made.hThread);
    // Before it runs: what it starts belongs to the job, too.
    if (!AssignProcessToJobObject(job, made.hProcess)) {
        complain(systemError("cannot bind the tool to this process"));
        TerminateProcess(made.hProcess, UINT(statusNotStarted));
        return std::nullopt;
    }
    ResumeThread(made.hThread);
    return tool;
}

/// Passes bytes on until nobody can write any more. Ends the tool when nobody reads.
void pump(HANDLE from, HANDLE job)
{
    const HANDLE to = GetStdHandle(STD_OUTPUT_HANDLE);
    std::vector<char> buffer(4096);
    DWORD length = 0;
    while (ReadFile(from, buffer.data(), DWORD(buffer.size()), &length, nullptr)) {
        for (DWORD done = 0, written = 0; done < length; done += written) {
            if (!WriteFile(to, buffer.data() + done, length - done, &written, nullptr)) {
                TerminateJobObject(job, UINT(statusOutputClosed));
                return;
            }
        }
    }
}

/// Reads one kind of information from the token of this process; empty when it cannot be read.
std::vector<unsigned char> tokenFacts(TOKEN_INFORMATION_CLASS kind)
{
    HANDLE opened = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened))
        return {};
    const Handle token(opened);
    DWORD bytes = 0;
    GetTokenInformation(token.get(), kind, nullptr, 0, &bytes);
    std::vector<unsigned char> facts(bytes);
    if (!GetTokenInformation(token.get(), kind, facts.data(), bytes, &bytes))
        return {};
    return facts;
}

/// Whether the file's owner is this process's user, or what the system makes the owner of the files that it creates:
/// for an administrator that may be the group. True on a volume that knows no owners.
bool isOwnFile(HANDLE file)
{
    DWORD volume = 0;
    if (GetVolumeInformationByHandleW(file, nullptr, 0, nullptr, nullptr, &volume, nullptr, 0)
        && (volume & FILE_PERSISTENT_ACLS) == 0)
        return true;
    PSID owner = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (GetSecurityInfo(file, SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &owner, nullptr, nullptr, nullptr,
                        &descriptor)
        != ERROR_SUCCESS)
        return false;
    const std::unique_ptr<void, LocalFreer> freed(descriptor);
    const std::vector<unsigned char> user = tokenFacts(TokenUser);
    const std::vector<unsigned char> maker = tokenFacts(TokenOwner);
    return (!user.empty() && EqualSid(owner, reinterpret_cast<const TOKEN_USER *>(user.data())->User.Sid))
           || (!maker.empty() && EqualSid(owner, reinterpret_cast<const TOKEN_OWNER *>(maker.data())->Owner));
}

} // namespace

CommandFileText readCommandFile(const std::string &name)
{
    const HANDLE opened = CreateFileA(name.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (opened == INVALID_HANDLE_VALUE)
        return {std::nullopt, "cannot read '" + name + "'"};
    const Handle file(opened);
    BY_HANDLE_FILE_INFORMATION facts = {};
    if (GetFileType(file.get()) != FILE_TYPE_DISK || !GetFileInformationByHandle(file.get(), &facts))
        return {std::nullopt, "cannot read '" + name + "'"};
    if (facts.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT)
        return {std::nullopt, "'" + name + "' is a link"};
    if (!isOwnFile(file.get()))
        return {std::nullopt, "'" + name + "' belongs to another user"};
    std::string bytes(maxCommandFileBytes + 1, '\0');
    std::size_t done = 0;
    DWORD length = 1;
    while (length > 0 && done < bytes.size()) {
        if (!ReadFile(file.get(), &bytes[done], DWORD(bytes.size() - done), &length, nullptr))
            return {std::nullopt, "cannot read '" + name + "'"};
        done += length;
    }
    bytes.resize(done);
    return {std::move(bytes), {}};
}

int runTool(const Command &command)
{
    const std::wstring path = wide(command.tool);
    std::wstring commandLine = wide(windowsCommandLine(command));
    if (path.empty() || commandLine.empty()) {
        complain("the command file is not UTF-8");
        return statusUnusable;
    }
    if (!isFullPath(path) || !isProgram(path)) {
        complain("'" + command.tool + "' is not the full path of a program");
        return statusNotStarted;
    }
    const Handle job = makeJob();
    if (!job) {
        complain(systemError("cannot make a job"));
        return statusUnusable;
    }
    const std::optional<RunningTool> tool = startTool(path, std::move(commandLine), job.get());
    if (!tool)
        return statusNotStarted;

    std::thread pumping(pump, tool->output.get(), job.get());
    WaitForSingleObject(tool->process.get(), INFINITE);
    DWORD exitCode = DWORD(statusUnusable);
    GetExitCodeProcess(tool->process.get(), &exitCode);
    // What it left behind may hold the pipe open.
    TerminateJobObject(job.get(), exitCode);
    pumping.join();
    return int(exitCode);
}

} // namespace relay
