// Lumbrel.ocx and the test container as the module tests find them: paths
// as Windows sees them, the module's exports, and a snapshot of the registry
// keys that registration touches.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace controltest {

// A path of the build tree as Windows sees it: Wine maps the Unix root to Z:.
std::string WindowsPath(const char* buildPath);
std::string OcxPath();
std::string ContainerPath();

struct OcxModule {
    OcxModule();
    ~OcxModule();
    OcxModule(const OcxModule&) = delete;
    OcxModule& operator=(const OcxModule&) = delete;

    HMODULE module = nullptr;
    HRESULT(STDAPICALLTYPE* canUnloadNow)() = nullptr;
    HRESULT(STDAPICALLTYPE* getClassObject)(REFCLSID, REFIID, LPVOID*) = nullptr;
    HRESULT(STDAPICALLTYPE* registerServer)() = nullptr;
    HRESULT(STDAPICALLTYPE* unregisterServer)() = nullptr;
};

// Every key and value under the subtrees that registration may touch, and
// the number of direct subkeys of HKCR\CLSID, HKCR\TypeLib and
// HKCR\Interface, one line each, sorted.
std::vector<std::string> RegistrySnapshot();
bool KeyExists(const std::string& path);
// The default value of HKCR\`path`; "<missing>" when there is none.
std::string DefaultValue(const std::string& path);
std::string NamedValue(const std::string& path, const char* name);

// Runs `commandLine`, feeding it nothing and collecting what it writes;
// returns its exit code, or -1 when it cannot be started or does not end
// within `timeoutMs`.
int RunProcess(const std::string& commandLine, std::string* output, std::string* errors,
               DWORD timeoutMs = 60000);

}  // namespace controltest
