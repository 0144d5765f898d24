#include "framework/ole/Registration.h"

#include <objbase.h>

#include <cstdio>

#include "framework/win32/UniqueHandle.h"

namespace framework::ole {

namespace {

struct RegistryKeyTraits {
    using Handle = HKEY;
    static Handle Invalid() { return nullptr; }
    static void Release(Handle key) { ::RegCloseKey(key); }
};
using UniqueKey = framework::win32::UniqueHandle<RegistryKeyTraits>;

// Creates `path` under HKEY_CLASSES_ROOT and sets its default value (when
// `value` is given) and one named value.
LONG WriteKey(const std::string& path, const char* value, const char* name = nullptr,
              const std::string& named = std::string()) {
    HKEY raw = nullptr;
    LONG status = ::RegCreateKeyExA(HKEY_CLASSES_ROOT, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                    KEY_WRITE, nullptr, &raw, nullptr);
    if (status != ERROR_SUCCESS) return status;
    UniqueKey key(raw);
    if (value != nullptr) {
        status = ::RegSetValueExA(key.Get(), nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(value),
                                  static_cast<DWORD>(std::char_traits<char>::length(value) + 1));
        if (status != ERROR_SUCCESS) return status;
    }
    if (name != nullptr) {
        status = ::RegSetValueExA(key.Get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(named.c_str()),
                                  static_cast<DWORD>(named.size() + 1));
    }
    return status;
}

LONG DeleteTree(const std::string& path) {
    const LONG status = ::RegDeleteTreeA(HKEY_CLASSES_ROOT, path.c_str());
    if (status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND) {
        const LONG last = ::RegDeleteKeyA(HKEY_CLASSES_ROOT, path.c_str());
        return last == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : last;
    }
    return status;
}

// Runs the writes in order and stops at the first failure.
class Writer {
public:
    void Key(const std::string& path, const std::string& value) {
        if (status_ == ERROR_SUCCESS) status_ = WriteKey(path, value.c_str());
    }
    void KeyWithName(const std::string& path, const std::string& value, const char* name,
                     const std::string& named) {
        if (status_ == ERROR_SUCCESS) status_ = WriteKey(path, value.c_str(), name, named);
    }
    LONG Status() const { return status_; }

private:
    LONG status_ = ERROR_SUCCESS;
};

}  // namespace

std::string GuidText(const GUID& guid) {
    char text[40];
    std::snprintf(text, sizeof text, "{%08lX-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                  static_cast<unsigned long>(guid.Data1), guid.Data2, guid.Data3, guid.Data4[0],
                  guid.Data4[1], guid.Data4[2], guid.Data4[3], guid.Data4[4], guid.Data4[5], guid.Data4[6],
                  guid.Data4[7]);
    return text;
}

std::string ModulePath(HMODULE module) {
    std::string path(MAX_PATH, '\0');
    for (;;) {
        const DWORD length = ::GetModuleFileNameA(module, &path[0], static_cast<DWORD>(path.size()));
        if (length == 0) return std::string();
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

LONG RegisterControlClass(const ControlRegistration& r) {
    const std::string clsid = "CLSID\\" + GuidText(r.classId);
    const std::string miscStatus = std::to_string(r.miscStatus);
    Writer write;
    write.Key(clsid, r.userTypeName);
    write.KeyWithName(clsid + "\\InprocServer32", r.modulePath, "ThreadingModel", "Apartment");
    write.Key(clsid + "\\ProgID", r.progId);
    write.Key(clsid + "\\VersionIndependentProgID", r.versionIndependentProgId);
    write.Key(clsid + "\\Control", "");
    write.Key(clsid + "\\ToolboxBitmap32", r.modulePath + ", " + std::to_string(r.toolboxBitmapId));
    write.Key(clsid + "\\MiscStatus", miscStatus);
    write.Key(clsid + "\\MiscStatus\\1", miscStatus);
    write.Key(clsid + "\\TypeLib", GuidText(r.typeLibId));
    write.Key(clsid + "\\Version", r.typeLibVersion);
    write.Key(r.progId, r.userTypeName);
    write.Key(r.progId + "\\CLSID", GuidText(r.classId));
    write.Key(r.versionIndependentProgId, r.userTypeName);
    write.Key(r.versionIndependentProgId + "\\CLSID", GuidText(r.classId));
    write.Key(r.versionIndependentProgId + "\\CurVer", r.progId);
    return write.Status();
}

LONG RegisterApartmentClass(const ClassRegistration& r) {
    const std::string clsid = "CLSID\\" + GuidText(r.classId);
    Writer write;
    write.Key(clsid, r.userTypeName);
    write.KeyWithName(clsid + "\\InprocServer32", r.modulePath, "ThreadingModel", "Apartment");
    if (!r.progId.empty()) {
        write.Key(clsid + "\\ProgID", r.progId);
        write.Key(r.progId, r.userTypeName);
        write.Key(r.progId + "\\CLSID", GuidText(r.classId));
    }
    return write.Status();
}

LONG UnregisterClass(const CLSID& classId, const std::string& progId,
                     const std::string& versionIndependentProgId) {
    LONG status = DeleteTree("CLSID\\" + GuidText(classId));
    // Never the whole of HKEY_CLASSES_ROOT: an empty name would mean the root.
    if (!progId.empty()) {
        const LONG result = DeleteTree(progId);
        if (status == ERROR_SUCCESS) status = result;
    }
    if (!versionIndependentProgId.empty()) {
        const LONG result = DeleteTree(versionIndependentProgId);
        if (status == ERROR_SUCCESS) status = result;
    }
    return status;
}

}  // namespace framework::ole
