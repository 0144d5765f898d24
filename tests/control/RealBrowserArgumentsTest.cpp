// Texts from the host through the real browser: a BSTR of 200,000
// characters and one that holds a NUL go through conversion, navigation, the
// tree walk and the events of a control with its real dialog, over the
// browser tests' art layout.
#include <cstring>
#include <string>
#include <vector>

#include "ArtLayout.h"
#include "ControlTestEnvironment.h"
#include "EmbeddedControlTest.h"
#include "control/LumbrelIds.h"
#include "framework/ole/Strings.h"

namespace controltest {
namespace {

using framework::ole::Bstr;

// Active in place, and nothing heard before the test's own calls.
class RealBrowserArgumentsTest : public browsertest::EmbeddedControlTest {
protected:
    RealBrowserArgumentsTest() : EmbeddedControlTest(OLEIVERB_INPLACEACTIVATE) {}
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(EmbeddedControlTest::SetUp());
        host->Events().clear();
        ASSERT_EQ(S_OK, host->Unknown()->QueryInterface(IID_IDispatch, dispatch.PutVoid()));
    }
    void TearDown() override {
        dispatch.Reset();
        EmbeddedControlTest::TearDown();
    }

    HRESULT SetItemPath(const Bstr& path, LONG position) {
        VARIANT arguments[2];
        arguments[1].vt = VT_BSTR;
        arguments[1].bstrVal = path.Get();
        arguments[0].vt = VT_I4;
        arguments[0].lVal = position;
        DISPPARAMS call = {arguments, nullptr, 2, 0};
        return dispatch->Invoke(control::kDispidSetItemPath, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                &call, nullptr, nullptr, nullptr);
    }
    // The ItemSel records, in order, as "valid number path".
    std::vector<std::string> Selections() const {
        std::vector<std::string> lines;
        for (const RecordedEvent& event : host->Events()) {
            if (event.dispid != control::kDispidItemSel) continue;
            lines.push_back(
                std::to_string(event.record.valid) + " " + std::to_string(event.record.itemNumber) + " " +
                std::string(event.record.path, strnlen(event.record.path, sizeof event.record.path)));
        }
        return lines;
    }

    ComPtr<IDispatch> dispatch;
};

TEST_F(RealBrowserArgumentsTest, AVeryLongPathWalksAsFarAsItsNamesGoAndTheControlGoesOn) {
    const std::string container = layout.Path("Animals");
    std::wstring longPath = framework::ole::AnsiToWide(container) + L"\\";
    longPath.append(200000, L'x');
    ASSERT_EQ(S_OK, SetItemPath(Bstr(longPath.c_str()), 2));
    const std::vector<std::string> expected = {"0 0 ", "0 0 ", "1 1 " + container + ".QLT"};
    EXPECT_EQ(expected, Selections()) << "the walk stops at the container; the long rest names nothing";
    EXPECT_EQ(container.size() + 1 + 200000 + 4, control->itemPath.size())
        << "the whole path was kept, and \".QLT\" appended when it named nothing";

    host->Events().clear();
    ASSERT_EQ(S_OK, SetItemPath(Bstr(framework::ole::AnsiToWide(container).c_str()), 3));
    const std::vector<std::string> after = {"0 0 ", "0 0 ", "1 1 " + container + ".QLT",
                                            "1 3 " + container + ".QLT"};
    EXPECT_EQ(after, Selections());
}

TEST_F(RealBrowserArgumentsTest, ANulInThePathEndsItBeforeTheBrowserSeesIt) {
    const std::string container = layout.Path("Animals");
    std::wstring withNul = framework::ole::AnsiToWide(container);
    withNul.push_back(L'\0');
    withNul.append(L"\\Owls");
    Bstr path(withNul.data(), static_cast<UINT>(withNul.size()));
    ASSERT_EQ(withNul.size(), path.Length());
    ASSERT_EQ(S_OK, SetItemPath(path, 4));
    const std::vector<std::string> expected = {"0 0 ", "0 0 ", "1 1 " + container + ".QLT",
                                               "1 4 " + container + ".QLT"};
    EXPECT_EQ(expected, Selections());
}

}  // namespace
}  // namespace controltest
