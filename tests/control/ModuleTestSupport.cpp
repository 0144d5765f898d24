#include "ModuleTestSupport.h"

#include <algorithm>
#include <functional>
#include <thread>

namespace controltest {

namespace {

constexpr const char* kSubtrees[] = {"CLSID\\{E59C4B46-C3EF-11D3-BC14-006097BFE3D4}",
                                     "CLSID\\{E59C4B47-C3EF-11D3-BC14-006097BFE3D4}",
                                     "TypeLib\\{E59C4B43-C3EF-11D3-BC14-006097BFE3D4}",
                                     "Interface\\{E59C4B44-C3EF-11D3-BC14-006097BFE3D4}",
                                     "Interface\\{E59C4B45-C3EF-11D3-BC14-006097BFE3D4}",
                                     "LUMBREL.LumbrelCtrl",
                                     "LUMBREL.LumbrelCtrl.1",
                                     "LUMBREL.LumbrelPropPage.1"};

class Key {
public:
    explicit Key(const std::string& path) {
        if (::RegOpenKeyExA(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_READ, &key_) != ERROR_SUCCESS)
            key_ = nullptr;
    }
    ~Key() {
        if (key_ != nullptr) ::RegCloseKey(key_);
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    HKEY Get() const { return key_; }

private:
    HKEY key_ = nullptr;
};

void Dump(const std::string& path, std::vector<std::string>* lines) {
    Key key(path);
    if (key.Get() == nullptr) return;
    lines->push_back("key " + path);
    for (DWORD i = 0;; ++i) {
        char name[512];
        DWORD nameLength = sizeof name;
        DWORD type = 0;
        BYTE data[2048];
        DWORD dataLength = sizeof data;
        if (::RegEnumValueA(key.Get(), i, name, &nameLength, nullptr, &type, data, &dataLength) !=
            ERROR_SUCCESS)
            break;
        lines->push_back("value " + path + " [" + std::string(name, nameLength) + "] " +
                         std::to_string(type) + " " + std::string(reinterpret_cast<char*>(data), dataLength));
    }
    std::vector<std::string> children;
    for (DWORD i = 0;; ++i) {
        char name[512];
        DWORD nameLength = sizeof name;
        if (::RegEnumKeyExA(key.Get(), i, name, &nameLength, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS)
            break;
        children.emplace_back(name, nameLength);
    }
    for (const std::string& child : children) Dump(path + "\\" + child, lines);
}

size_t SubkeyCount(const char* path) {
    Key key(path);
    DWORD count = 0;
    if (key.Get() != nullptr)
        ::RegQueryInfoKeyA(key.Get(), nullptr, nullptr, nullptr, &count, nullptr, nullptr, nullptr, nullptr,
                           nullptr, nullptr, nullptr);
    return count;
}

template <class F>
void Resolve(HMODULE module, const char* name, F* function) {
    *function = reinterpret_cast<F>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
}

}  // namespace

std::string WindowsPath(const char* buildPath) {
    std::string path = buildPath;
    if (!path.empty() && path[0] == '/') path = "Z:" + path;
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

std::string OcxPath() {
    return WindowsPath(LUMBREL_OCX_PATH);
}

std::string ContainerPath() {
    return WindowsPath(LUMBREL_CONTAINER_PATH);
}

OcxModule::OcxModule() : module(::LoadLibraryA(OcxPath().c_str())) {
    if (module == nullptr) return;
    Resolve(module, "DllCanUnloadNow", &canUnloadNow);
    Resolve(module, "DllGetClassObject", &getClassObject);
    Resolve(module, "DllRegisterServer", &registerServer);
    Resolve(module, "DllUnregisterServer", &unregisterServer);
}

OcxModule::~OcxModule() {
    if (module != nullptr) ::FreeLibrary(module);
}

std::vector<std::string> RegistrySnapshot() {
    std::vector<std::string> lines;
    for (const char* subtree : kSubtrees) Dump(subtree, &lines);
    for (const char* root : {"CLSID", "TypeLib", "Interface"})
        lines.push_back(std::string("count ") + root + " " + std::to_string(SubkeyCount(root)));
    std::sort(lines.begin(), lines.end());
    return lines;
}

bool KeyExists(const std::string& path) {
    Key key(path);
    return key.Get() != nullptr;
}

std::string NamedValue(const std::string& path, const char* name) {
    Key key(path);
    if (key.Get() == nullptr) return "<missing>";
    char data[2048] = {};
    DWORD length = sizeof data - 1;
    DWORD type = 0;
    if (::RegQueryValueExA(key.Get(), name, nullptr, &type, reinterpret_cast<BYTE*>(data), &length) !=
        ERROR_SUCCESS)
        return "<missing>";
    return std::string(data);
}

std::string DefaultValue(const std::string& path) {
    return NamedValue(path, nullptr);
}

int RunProcess(const std::string& commandLine, std::string* output, std::string* errors, DWORD timeoutMs) {
    SECURITY_ATTRIBUTES inherit = {sizeof inherit, nullptr, TRUE};
    HANDLE outRead = nullptr, outWrite = nullptr, errRead = nullptr, errWrite = nullptr;
    if (!::CreatePipe(&outRead, &outWrite, &inherit, 1 << 16)) return -1;
    if (!::CreatePipe(&errRead, &errWrite, &inherit, 1 << 16)) {
        ::CloseHandle(outRead);
        ::CloseHandle(outWrite);
        return -1;
    }
    ::SetHandleInformation(outRead, HANDLE_FLAG_INHERIT, 0);
    ::SetHandleInformation(errRead, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = nullptr;
    startup.hStdOutput = outWrite;
    startup.hStdError = errWrite;
    PROCESS_INFORMATION process = {};
    std::string line = commandLine;
    const BOOL started =
        ::CreateProcessA(nullptr, &line[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process);
    ::CloseHandle(outWrite);
    ::CloseHandle(errWrite);
    auto drain = [](HANDLE pipe, std::string* into) {
        char buffer[4096];
        DWORD read = 0;
        while (::ReadFile(pipe, buffer, sizeof buffer, &read, nullptr) && read > 0)
            into->append(buffer, read);
    };
    std::string out, err;
    int code = -1;
    if (started) {
        std::thread errorReader(drain, errRead, &err);
        std::thread outputReader(drain, outRead, &out);
        if (::WaitForSingleObject(process.hProcess, timeoutMs) == WAIT_OBJECT_0) {
            DWORD exitCode = 0;
            ::GetExitCodeProcess(process.hProcess, &exitCode);
            code = static_cast<int>(exitCode);
        } else {
            ::TerminateProcess(process.hProcess, 99);
        }
        outputReader.join();
        errorReader.join();
        ::CloseHandle(process.hThread);
        ::CloseHandle(process.hProcess);
    }
    ::CloseHandle(outRead);
    ::CloseHandle(errRead);
    if (output != nullptr) *output = out;
    if (errors != nullptr) *errors = err;
    return code;
}

}  // namespace controltest
