// Our codec against StormLib's independent implementation of the same format.
#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "containers/dcl/Dcl.h"
#include "tests/dcl/DclSampleData.h"
#include "tests/dcl/DclTestSupport.h"

// StormLib exports these without declaring them in its public header.
extern "C" unsigned int implode(unsigned int (*read)(char*, unsigned int*, void*),
                                void (*write)(char*, unsigned int*, void*), char* workBuffer, void* param,
                                unsigned int* type, unsigned int* dictionarySize);
extern "C" unsigned int explode(unsigned int (*read)(char*, unsigned int*, void*),
                                void (*write)(char*, unsigned int*, void*), char* workBuffer, void* param);

namespace {

using dcltest::Bytes;
using dcltest::Channel;

// 36312 and 12596 bytes are the sizes of StormLib's state in a 32-bit build;
// a 64-bit build has 8-byte longs and pointers in it and needs more.
constexpr size_t kStormImplodeWork = 2 * 36312;
constexpr size_t kStormExplodeWork = 2 * 12596;

struct StormRun {
    unsigned int result;
    Bytes output;
};

StormRun StormImplode(const Bytes& data, unsigned int type, unsigned int dictionarySize) {
    std::vector<char> work(kStormImplodeWork);
    Channel channel;
    channel.input = data.data();
    channel.inputSize = data.size();
    const unsigned int result = ::implode(dcltest::ReadFromChannel, dcltest::WriteToChannel, work.data(),
                                          &channel, &type, &dictionarySize);
    return {result, std::move(channel.output)};
}

StormRun StormExplode(const Bytes& stream) {
    std::vector<char> work(kStormExplodeWork);
    Channel channel;
    channel.input = stream.data();
    channel.inputSize = stream.size();
    const unsigned int result =
        ::explode(dcltest::ReadFromChannel, dcltest::WriteToChannel, work.data(), &channel);
    return {result, std::move(channel.output)};
}

struct Setting {
    unsigned int type;
    unsigned int dictionarySize;
};

std::string Describe(const Setting& setting) {
    return std::string(setting.type == dcl::kCompressionAscii ? "Ascii" : "Binary") +
           std::to_string(setting.dictionarySize);
}

void PrintTo(const Setting& setting, std::ostream* out) {
    *out << Describe(setting);
}

std::string SettingName(const testing::TestParamInfo<Setting>& info) {
    return Describe(info.param);
}

const Setting kAllSettings[] = {
    {dcl::kCompressionBinary, 1024}, {dcl::kCompressionBinary, 2048}, {dcl::kCompressionBinary, 4096},
    {dcl::kCompressionAscii, 1024},  {dcl::kCompressionAscii, 2048},  {dcl::kCompressionAscii, 4096},
};

std::vector<std::pair<std::string, Bytes>> Samples() {
    Bytes mixed = dcltest::TextLike(1 << 20, 5);
    const Bytes bitmap = dcltest::BitmapLike(1 << 20, 6);
    const Bytes noise = dcltest::RandomBytes(256 << 10, 7);
    mixed.insert(mixed.end(), bitmap.begin(), bitmap.end());
    mixed.insert(mixed.end(), noise.begin(), noise.end());
    return {
        {"random", dcltest::RandomBytes(100000, 1)},
        {"text", dcltest::TextLike(200000, 2)},
        {"bitmap", dcltest::BitmapLike(200000, 3)},
        {"repetitive", dcltest::HighlyRepetitive(300000)},
        {"one byte", Bytes{'Q'}},
        {"two bytes", Bytes{0x00, 0xFF}},
        {"large mixed", mixed},
    };
}

class Interop : public testing::TestWithParam<Setting> {};

TEST_P(Interop, StormLibExplodesOurStreams) {
    for (const auto& [name, data] : Samples()) {
        const dcltest::CodecRun packed =
            dcltest::RunImplode(data, GetParam().type, GetParam().dictionarySize);
        ASSERT_EQ(packed.result, dcl::kOk) << name;
        const StormRun unpacked = StormExplode(packed.output);
        EXPECT_EQ(unpacked.result, dcl::kOk) << name;
        EXPECT_TRUE(unpacked.output == data) << name;
    }
}

TEST_P(Interop, WeExplodeStormLibStreams) {
    auto samples = Samples();
    samples.emplace_back("empty", Bytes());
    for (const auto& [name, data] : samples) {
        const StormRun packed = StormImplode(data, GetParam().type, GetParam().dictionarySize);
        ASSERT_EQ(packed.result, dcl::kOk) << name;
        const dcltest::CodecRun unpacked = dcltest::RunExplode(packed.output);
        EXPECT_EQ(unpacked.result, dcl::kOk) << name;
        EXPECT_TRUE(unpacked.output == data) << name;
    }
}

TEST_P(Interop, EmptyInputGivesTheSameStreamAsStormLib) {
    // StormLib's explode refuses streams of four bytes or less, so this one
    // cannot go the other way; the bytes themselves must agree.
    const dcltest::CodecRun ours = dcltest::RunImplode(Bytes(), GetParam().type, GetParam().dictionarySize);
    const StormRun theirs = StormImplode(Bytes(), GetParam().type, GetParam().dictionarySize);
    EXPECT_TRUE(ours.output == theirs.output);
}

TEST_P(Interop, OurStreamsAreAboutAsSmallAsStormLibs) {
    for (const auto& [name, data] : std::vector<std::pair<std::string, Bytes>>{
             {"text", dcltest::TextLike(1 << 20, 8)}, {"bitmap", dcltest::BitmapLike(1 << 20, 9)}}) {
        const size_t ours =
            dcltest::RunImplode(data, GetParam().type, GetParam().dictionarySize).output.size();
        const size_t theirs = StormImplode(data, GetParam().type, GetParam().dictionarySize).output.size();
        EXPECT_LE(ours, theirs + theirs / 50) << name << ": ours " << ours << ", StormLib " << theirs;
    }
}

INSTANTIATE_TEST_SUITE_P(AllModes, Interop, testing::ValuesIn(kAllSettings), SettingName);

TEST(Interop, BothTakeTheClassicStreamTheSameWay) {
    const Bytes classic{0x00, 0x04, 0x82, 0x24, 0x25, 0x8f, 0x80, 0x7f};
    const StormRun theirs = StormExplode(classic);
    const dcltest::CodecRun ours = dcltest::RunExplode(classic);
    EXPECT_EQ(ours.result, theirs.result);
    EXPECT_TRUE(ours.output == theirs.output);
}

TEST(Interop, BothRejectTruncatedStreams) {
    const Bytes stream =
        dcltest::RunImplode(dcltest::TextLike(3000, 10), dcl::kCompressionAscii, 4096).output;
    // From 5 bytes on, where StormLib starts to decode at all.
    for (size_t length = 5; length < stream.size(); ++length) {
        const Bytes cut(stream.begin(), stream.begin() + static_cast<ptrdiff_t>(length));
        ASSERT_EQ(dcltest::RunExplode(cut).result, StormExplode(cut).result) << length;
    }
}

}  // namespace
