#include "platform/child_process.h"

#include <algorithm>
#include <utility>

#include "platform/win32/process_group.h"
#include "platform/win32/system_calls.h"

// The tree of a program is part of this process's job (process_group.h), and so is what the program leaves
// running. A program that the recorder starts is part of the job of the run, as the recorder is; a job of the
// recorder's own would end with it and take along what runs in the background.

namespace ventrix::platform {
namespace {

/// Quotes an argument by the rules of command_line.h.
std::wstring Quoted(const std::wstring& argument) {
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : argument) {
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        if (c == L'"') {
            // Those before the quote count double, and one more escapes it.
            const std::size_t before = quoted.size() - quoted.find_last_not_of(L'\\') - 1;
            quoted.append(before + 1, L'\\');
        }
        quoted += c;
    }
    return quoted.append(backslashes, L'\\') + L'"';
}

bool IsCommandScript(const std::wstring& program) {
    const std::wstring suffix = std::filesystem::path(program).extension().wstring();
    return ::lstrcmpiW(suffix.c_str(), L".bat") == 0 || ::lstrcmpiW(suffix.c_str(), L".cmd") == 0;
}

std::wstring CommandLine(const std::vector<std::string>& arguments) {
    const std::wstring program = CallPath(arguments.front());
    std::wstring line = Quoted(program);
    for (auto argument = arguments.begin() + 1; argument != arguments.end(); ++argument) {
        line += L' ' + Quoted(Wide(*argument));
    }
    // The interpreter takes everything between the first and the last quote as the command.
    return IsCommandScript(program) ? L"cmd.exe /d /s /c \"" + line + L'"' : line;
}

bool IsNamed(const std::wstring& variable, const std::wstring& name) {
    const std::size_t equals = variable.find(L'=', 1);
    return ::CompareStringOrdinal(variable.c_str(), static_cast<int>(equals), name.c_str(),
                                  static_cast<int>(name.size()), TRUE) == CSTR_EQUAL;
}

/// The variables of this process with those of the program on top, each ended by a zero, and one zero more.
std::wstring EnvironmentBlock(const ProgramStart& start) {
    std::vector<std::wstring> variables;
    wchar_t* const own = ::GetEnvironmentStringsW();
    for (const wchar_t* at = own; *at != 0; at += std::wstring_view(at).size() + 1) {
        variables.emplace_back(at);
    }
    ::FreeEnvironmentStringsW(own);
    for (const auto& [name, value] : start.environment) {
        std::erase_if(variables,
                      [wide = Wide(name)](const std::wstring& variable) { return IsNamed(variable, wide); });
        variables.push_back(Wide(name + "=" + value));
    }
    std::wstring block;
    for (const std::wstring& variable : variables) {
        block += variable + L'\0';
    }
    return block + L'\0';
}

::SECURITY_ATTRIBUTES Inheritable() {
    return {sizeof(::SECURITY_ATTRIBUTES), nullptr, TRUE};
}

Handle OpenNull() {
    ::SECURITY_ATTRIBUTES inheritable = Inheritable();
    return Handle(::CreateFileW(L"NUL", GENERIC_READ, kShareAll, &inheritable, OPEN_EXISTING, 0, nullptr));
}

Handle OpenOutput(const std::string& file) {
    ::SECURITY_ATTRIBUTES inheritable = Inheritable();
    return Handle(::CreateFileW(CallPath(file).c_str(), FILE_APPEND_DATA | SYNCHRONIZE, kShareAll,
                                &inheritable, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
}

/// A copy of one of this process's own streams that a program may inherit.
Handle OwnStream(::DWORD which) {
    HANDLE copy = nullptr;
    ::DuplicateHandle(::GetCurrentProcess(), ::GetStdHandle(which), ::GetCurrentProcess(), &copy, 0, TRUE,
                      DUPLICATE_SAME_ACCESS);
    return Handle(copy);
}

/// The streams of a program, and the list that keeps it from inheriting anything else.
class Streams {
  public:
    explicit Streams(const std::string& outputFile) : input_(OpenNull()) {
        if (outputFile.empty()) {
            output_ = OwnStream(STD_OUTPUT_HANDLE);
            error_ = OwnStream(STD_ERROR_HANDLE);
        } else {
            output_ = OpenOutput(outputFile);
        }
        for (const Handle* stream : {&input_, &output_, &error_}) {
            if (stream->IsOpen()) {
                inherited_.push_back(stream->Get());
            }
        }
        ::SIZE_T size = 0;
        ::InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        attributes_.resize(size);
        ::InitializeProcThreadAttributeList(List(), 1, 0, &size);
        ::UpdateProcThreadAttribute(List(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, inherited_.data(),
                                    inherited_.size() * sizeof(HANDLE), nullptr, nullptr);
    }
    ~Streams() { ::DeleteProcThreadAttributeList(List()); }
    Streams(const Streams&) = delete;
    Streams& operator=(const Streams&) = delete;

    ::STARTUPINFOEXW StartInfo() {
        ::STARTUPINFOEXW info = {};
        info.StartupInfo.cb = sizeof info;
        info.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
        info.StartupInfo.hStdInput = input_.Get();
        info.StartupInfo.hStdOutput = output_.Get();
        info.StartupInfo.hStdError = error_.IsOpen() ? error_.Get() : output_.Get();
        info.lpAttributeList = List();
        return info;
    }

  private:
    ::LPPROC_THREAD_ATTRIBUTE_LIST List() {
        return reinterpret_cast<::LPPROC_THREAD_ATTRIBUTE_LIST>(attributes_.data());
    }

    Handle input_;
    Handle output_;
    Handle error_;
    std::vector<HANDLE> inherited_;
    std::vector<char> attributes_;
};

std::string WhyNotStarted(::DWORD error, const std::string& program) {
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
            return program + " does not exist";
        case ERROR_BAD_EXE_FORMAT:
            return program + " is not a program that this system can run";
        default:
            return program + " cannot be started: " + PortableError(error).message();
    }
}

}  // namespace

StartedProgram StartProgram(const ProgramStart& start) {
    StartedProgram result;
    const std::string& program = start.arguments.front();
    // The command interpreter would start and then report the missing script itself.
    if (::GetFileAttributesW(CallPath(program).c_str()) == INVALID_FILE_ATTRIBUTES) {
        result.notStarted = WhyNotStarted(::GetLastError(), program);
        return result;
    }
    if (start.owner == 0 || start.owner == ProcessId()) {
        OwnProcessGroup();
    }
    std::wstring line = CommandLine(start.arguments);
    std::wstring environment = EnvironmentBlock(start);
    Streams streams(start.outputFile);
    ::STARTUPINFOEXW info = streams.StartInfo();
    ::PROCESS_INFORMATION started = {};
    if (::CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE,
                         CREATE_UNICODE_ENVIRONMENT | CREATE_NEW_PROCESS_GROUP | EXTENDED_STARTUPINFO_PRESENT,
                         environment.data(), nullptr, &info.StartupInfo, &started) == 0) {
        result.notStarted = WhyNotStarted(::GetLastError(), program);
        return result;
    }
    ::CloseHandle(started.hThread);
    result.handle = reinterpret_cast<std::intptr_t>(started.hProcess);
    return result;
}

ProgramEnd WaitForProgram(StartedProgram& program) {
    return *WaitForProgram(program, std::chrono::milliseconds(-1));
}

std::optional<ProgramEnd> WaitForProgram(StartedProgram& program, std::chrono::milliseconds limit) {
    if (program.handle == -1) {
        return ProgramEnd{program.notStarted, 0, 0};
    }
    const auto process = reinterpret_cast<HANDLE>(program.handle);
    const auto wait = limit.count() < 0 ? INFINITE : static_cast<DWORD>(limit.count());
    if (::WaitForSingleObject(process, wait) == WAIT_TIMEOUT) {
        return std::nullopt;
    }
    const Handle owned(reinterpret_cast<HANDLE>(std::exchange(program.handle, -1)));
    ::DWORD exitCode = 0;
    ::GetExitCodeProcess(owned.Get(), &exitCode);
    return ProgramEnd{{}, static_cast<int>(exitCode), 0};
}

void OwnStartedPrograms() {
    OwnProcessGroup();
}

void EndStartedPrograms() {
    OwnProcessGroup();
    EndProcessGroup();
}

// The one that started it is in a job that ends with it, and so is this process.
void EndWithStarter() {}

std::int64_t ProcessId() {
    return ::GetCurrentProcessId();
}

}  // namespace ventrix::platform
