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
        Run("# every member that works without the browser\n"
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
    EXPECT_EQ(
        "{\"property\":\"AspectRatio\",\"value\":0}\n"
        "{\"property\":\"thumbNailState\",\"value\":0}\n",
        output);
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

TEST_F(ScriptModeTest, CommandsThatNeedTheBrowserSaySo) {
    for (const char* command :
         {"tree C:\\art", "combo C:", "click 1", "dblclick 1", "dblclick-tree", "state"}) {
        EXPECT_EQ(2, Run(std::string(command) + "\n")) << command;
        EXPECT_NE(std::string::npos, errors.find("browser")) << command << ": " << errors;
    }
}

TEST_F(ScriptModeTest, AnUnregisteredControlIsAFailure) {
    ocx.unregisterServer();
    EXPECT_EQ(1, Run("get AspectRatio\n"));
    EXPECT_TRUE(output.empty());
    EXPECT_NE(std::string::npos, errors.find("AtlAxCreateControlEx")) << errors;
}

}  // namespace
}  // namespace controltest
