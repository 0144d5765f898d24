// Persistence carries the version of the state and the control's extent,
// nothing of the properties: the host sets them again after each start.
#include <cstring>
#include <map>

#include "ControlTestEnvironment.h"
#include "PersistTestSupport.h"

namespace controltest {
namespace {

class PersistenceTest : public ControlFixture {};

std::vector<unsigned char> Contents(IStream* stream) {
    HGLOBAL memory = nullptr;
    ::GetHGlobalFromStream(stream, &memory);
    STATSTG stat = {};
    stream->Stat(&stat, STATFLAG_NONAME);
    std::vector<unsigned char> bytes(static_cast<size_t>(stat.cbSize.QuadPart));
    const void* data = ::GlobalLock(memory);
    if (!bytes.empty()) std::memcpy(bytes.data(), data, bytes.size());
    ::GlobalUnlock(memory);
    return bytes;
}

LUMBREL_COM_CLASS_BEGIN
class MemoryBag : public StackPropertyBag {
public:
    HRESULT STDMETHODCALLTYPE Read(LPCOLESTR name, VARIANT* value, IErrorLog*) override {
        auto found = values.find(name);
        if (found == values.end()) return E_INVALIDARG;
        value->vt = VT_I4;
        value->lVal = found->second;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Write(LPCOLESTR name, VARIANT* value) override {
        if (value->vt != VT_I4) return E_INVALIDARG;
        values[name] = value->lVal;
        return S_OK;
    }
    std::map<std::wstring, LONG> values;
};
LUMBREL_COM_CLASS_END

TEST_F(PersistenceTest, TheStreamHoldsTheVersionThenTheExtentAndNoProperty) {
    auto persist = As<IPersistStreamInit>(IID_IPersistStreamInit);
    ASSERT_EQ(S_OK, persist->InitNew());
    EXPECT_EQ(S_FALSE, persist->IsDirty());
    control->SetThumbNailState(TRUE);
    EXPECT_EQ(S_OK, persist->IsDirty());

    ULARGE_INTEGER size = {};
    ASSERT_EQ(S_OK, persist->GetSizeMax(&size));
    EXPECT_EQ(12u, size.QuadPart);

    SIZEL extent = {0x1234, 0x0567};
    ASSERT_EQ(S_OK, As<IOleObject>(IID_IOleObject)->SetExtent(DVASPECT_CONTENT, &extent));
    auto stream = NewStream();
    ASSERT_EQ(S_OK, persist->Save(stream.Get(), TRUE));
    EXPECT_EQ(
        (std::vector<unsigned char>{0x00, 0x00, 0x01, 0x00, 0x34, 0x12, 0x00, 0x00, 0x67, 0x05, 0x00, 0x00}),
        Contents(stream.Get()))
        << "major 1 in the high word, minor 0 in the low; then the extent's width and height";
    EXPECT_EQ(S_FALSE, persist->IsDirty());

    Rewind(stream.Get());
    EXPECT_EQ(S_OK, persist->Load(stream.Get()));
    EXPECT_EQ(E_POINTER, persist->Load(static_cast<IStream*>(nullptr)));
    EXPECT_EQ(E_POINTER, persist->Save(static_cast<IStream*>(nullptr), TRUE));
}

TEST_F(PersistenceTest, ATruncatedStreamDoesNotLoad) {
    auto persist = As<IPersistStreamInit>(IID_IPersistStreamInit);
    auto stream = NewStream();
    const unsigned char two[] = {0x00, 0x00};
    stream->Write(two, 2, nullptr);
    Rewind(stream.Get());
    EXPECT_TRUE(FAILED(persist->Load(stream.Get())));
}

TEST_F(PersistenceTest, SavingWithoutClearingKeepsTheStateDirty) {
    auto persist = As<IPersistStreamInit>(IID_IPersistStreamInit);
    control->SetThumbNailState(FALSE);
    auto stream = NewStream();
    ASSERT_EQ(S_OK, persist->Save(stream.Get(), FALSE));
    EXPECT_EQ(S_OK, persist->IsDirty());
}

TEST_F(PersistenceTest, ThePropertyBagHoldsTheVersionAndTheExtentOnly) {
    auto persist = As<IPersistPropertyBag>(IID_IPersistPropertyBag);
    MemoryBag bag;
    ASSERT_EQ(S_OK, persist->InitNew());
    SIZEL extent = {0x1234, 0x0567};
    ASSERT_EQ(S_OK, As<IOleObject>(IID_IOleObject)->SetExtent(DVASPECT_CONTENT, &extent));
    ASSERT_EQ(S_OK, persist->Save(&bag, TRUE, TRUE));
    ASSERT_EQ(3u, bag.values.size());
    EXPECT_EQ(0x00010000, bag.values[L"_Version"]);
    EXPECT_EQ(0x1234, bag.values[L"_ExtentX"]);
    EXPECT_EQ(0x0567, bag.values[L"_ExtentY"]);
    EXPECT_EQ(S_OK, persist->Load(&bag, nullptr));
    MemoryBag empty;
    EXPECT_EQ(S_OK, persist->Load(&empty, nullptr)) << "a bag from before there was state";
    EXPECT_EQ(E_POINTER, persist->Load(static_cast<IPropertyBag*>(nullptr), nullptr));
}

}  // namespace
}  // namespace controltest
