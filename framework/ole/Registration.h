// Self-registration of in-process COM classes under HKEY_CLASSES_ROOT: the
// entries that a control and a property page need, and their removal, which
// leaves no key of the class behind.
#pragma once

#include <windows.h>

#include <string>

namespace framework::ole {

// "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}" in upper case, as the registry keeps it.
std::string GuidText(const GUID& guid);

// The path of `module` as the registry should name it; empty on failure.
std::string ModulePath(HMODULE module);

struct ControlRegistration {
    CLSID classId;
    std::string progId;                    // "Vendor.Class.1"
    std::string versionIndependentProgId;  // "Vendor.Class"
    std::string userTypeName;
    std::string modulePath;
    int toolboxBitmapId;
    DWORD miscStatus;
    GUID typeLibId;
    std::string typeLibVersion;  // "1.0"
};

// Writes CLSID\{class} with InprocServer32 (ThreadingModel "Apartment"),
// ProgID, VersionIndependentProgID, Control, ToolboxBitmap32, MiscStatus
// (decimal, also under the content aspect's subkey "1"), TypeLib and
// Version, and both
// ProgID keys. Nothing marks the class insertable. Returns a Win32 error
// code; a failure leaves what was written for the unregistration to remove.
LONG RegisterControlClass(const ControlRegistration& registration);

struct ClassRegistration {
    CLSID classId;
    std::string progId;  // may be empty
    std::string userTypeName;
    std::string modulePath;
};

// Writes CLSID\{class} with InprocServer32 (ThreadingModel "Apartment") and,
// when there is one, the ProgID key.
LONG RegisterApartmentClass(const ClassRegistration& registration);

// Removes CLSID\{class} and the named ProgID keys with everything under them.
// Keys that are already gone are no failure.
LONG UnregisterClass(const CLSID& classId, const std::string& progId,
                     const std::string& versionIndependentProgId = std::string());

}  // namespace framework::ole
