// The test container's script mode end to end: the registered control
// hosted through atl.dll's AtlAxWin, driven by a script, reporting in JSON.
#include <windows.h>

#include <gtest/gtest.h>

#include <fstream>

#include "ModuleTestSupport.h"

namespace controltest {
namespace {

class ScriptModeTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(nullptr, ocx.module);
        ASSERT_EQ(S_OK, ocx.registerServer());
        char directory[MAX_PATH] = {};
        ::GetTempPathA(MAX_PATH, directory);
        folder = std::string(directory) + "lumbrel-script-" + std::to_string(::GetCurrentProcessId());
        ::CreateDirectoryA(folder.c_str(), nullptr);
    }
    void TearDown() override {
        ocx.unregisterServer();
        ::DeleteFileA((folder + "\\script.txt").c_str());
        ::DeleteFileA((folder + "\\shot.png").c_str());
        ::RemoveDirectoryA(folder.c_str());
    }
    int Run(const std::string& script) {
        const std::string file = folder + "\\script.txt";
        std::ofstream(file) << script;
        return RunProcess("\"" + ContainerPath() + "\" --script \"" + file + "\"", &output, &errors);
    }
    OcxModule ocx;
    std::string folder;
    std::string output;
    std::string errors;
};

TEST_F(ScriptModeTest, DrivesTheMembersAndPrintsPropertiesAsJson) {
    const std::string shot = folder + "\\shot.png";
    const int status =
        Run("# every member\n"
            "get AspectRatio\n"
            "set AspectRatio 1\n"
            "get thumbNailState\n"
            "set thumbNailState 1\n"
            "SetItemPath C:\\art\\two words 3\n"
            "RefreshCombo D: 1\n"
            "RefreshCombo D: 0\n"
            "DoubleClickFlag 1\n"
            "RefreshControl\n"
            "RedrawBitmaps\n"
            "key F5\n"
            "alt A\n"
            "wait 20\n"
            "\n"
            "screenshot " +
            shot + "\n");
    EXPECT_EQ(0, status) << errors;
    // The browser tells the host that nothing is selected each time its tree
    // is rebuilt (RefreshControl, F5, and whatever navigation the prefix's
    // primary folder allows); the properties come between those events.
    const std::string nothingSelected =
        "{\"event\":\"ItemSel\",\"valid\":0,\"itemNumber\":0,\"path\":\"\",\"name\":\"\"}";
    std::string properties;
    int events = 0;
    size_t start = 0;
    while (start < output.size()) {
        const size_t end = output.find('\n', start);
        const std::string line =
            output.substr(start, end == std::string::npos ? std::string::npos : end - start);
        start = end == std::string::npos ? output.size() : end + 1;
        if (line.rfind("{\"event\"", 0) == 0) {
            EXPECT_EQ(nothingSelected, line);
            ++events;
        } else {
            properties += line + "\n";
        }
    }
    EXPECT_GE(events, 2) << output;
    // Radio 1087 is checked when the browser starts: the state reads 1.
    EXPECT_EQ(
        "{\"property\":\"AspectRatio\",\"value\":0}\n"
        "{\"property\":\"thumbNailState\",\"value\":1}\n",
        properties);
    std::ifstream png(shot, std::ios::binary);
    char signature[8] = {};
    png.read(signature, 8);
    EXPECT_EQ(std::string("\x89PNG\r\n\x1a\n", 8), std::string(signature, 8));
}

TEST_F(ScriptModeTest, UnknownCommandsExitWithStatusTwo) {
    EXPECT_EQ(2, Run("get AspectRatio\nfrobnicate now\nget AspectRatio\n"));
    EXPECT_EQ("{\"property\":\"AspectRatio\",\"value\":0}\n", output) << "it stops at the unknown command";
    EXPECT_NE(std::string::npos, errors.find("line 2")) << errors;
    EXPECT_NE(std::string::npos, errors.find("unknown command 'frobnicate'")) << errors;
}

TEST_F(ScriptModeTest, MalformedCommandsExitWithStatusTwo) {
    EXPECT_EQ(2, Run("SetItemPath C:\\art\n"));
    EXPECT_EQ(2, Run("set Colour 1\n"));
    EXPECT_EQ(2, Run("key Hyper\n"));
    EXPECT_EQ(2, Run("wait soon\n"));
}

TEST_F(ScriptModeTest, CommandsThatNeedTheBrowserFindIt) {
    // The module's control has the browser dialog: the commands reach its
    // tree, combo and gallery, whatever they then find there.
    for (const char* command :
         {"tree C:\\art", "combo C:", "click 1", "dblclick 1", "dblclick-tree", "state"}) {
        Run(std::string(command) + "\n");
        EXPECT_EQ(std::string::npos, errors.find("does not have")) << command << ": " << errors;
    }
    EXPECT_EQ(1, Run("tree C:\\art\n"));
    EXPECT_NE(std::string::npos, errors.find("tree: no node 'C:'")) << errors;
    EXPECT_EQ(1, Run("combo C:\n"));
    EXPECT_NE(std::string::npos, errors.find("combo: no entry 'C:'"))
        << "the list is built at its first drop-down";
}

TEST_F(ScriptModeTest, AnUnregisteredControlIsAFailure) {
    ocx.unregisterServer();
    EXPECT_EQ(1, Run("get AspectRatio\n"));
    EXPECT_TRUE(output.empty());
    EXPECT_NE(std::string::npos, errors.find("AtlAxCreateControlEx")) << errors;
}

}  // namespace
}  // namespace controltest
