// Self-registration that cannot begin: a module without the type library
// fails with SELFREG_E_TYPELIB and writes no class.
#include <iterator>

#include "ControlTestEnvironment.h"
#include "control/ControlModule.h"
#include "control/LumbrelIds.h"

namespace controltest {
namespace {

bool ClassesRootKeyExists(const char* path) {
    HKEY key = nullptr;
    if (::RegOpenKeyExA(HKEY_CLASSES_ROOT, path, 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
    ::RegCloseKey(key);
    return true;
}

TEST(SelfRegistrationTest, AModuleWithoutTheTypeLibraryRegistersNothing) {
    const char* const keys[] = {"CLSID\\{E59C4B46-C3EF-11D3-BC14-006097BFE3D4}",
                                "CLSID\\{E59C4B47-C3EF-11D3-BC14-006097BFE3D4}", "LUMBREL.LumbrelCtrl.1",
                                "LUMBREL.LumbrelPropPage.1"};
    bool before[std::size(keys)] = {};
    for (size_t i = 0; i < std::size(keys); ++i) before[i] = ClassesRootKeyExists(keys[i]);

    // A system module: it exists and has a path, but holds no type library.
    const HMODULE system = ::GetModuleHandleA("kernel32.dll");
    ASSERT_NE(nullptr, system);
    EXPECT_EQ(control::kSelfRegTypeLibError, control::RegisterServer(system));
    EXPECT_EQ(static_cast<HRESULT>(0x80040200), control::kSelfRegTypeLibError);
    for (size_t i = 0; i < std::size(keys); ++i)
        EXPECT_EQ(before[i], ClassesRootKeyExists(keys[i])) << keys[i];
}

}  // namespace
}  // namespace controltest
