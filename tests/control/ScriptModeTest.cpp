// The test container's script mode end to end: the registered control
// hosted through atl.dll's AtlAxWin, driven by a script, reporting in JSON,
// over the browser tests' disk layout as the primary graphics folder.
#include <windows.h>

#include <gtest/gtest.h>

#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "ArtLayout.h"
#include "BrowserTestSupport.h"

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

// The browser through the script mode, end to end: the container's commands
// reach the dialog's own windows by real messages, and the events come back
// through the connection point as JSON lines.
class ScriptedBrowserTest : public ScriptModeTest {
protected:
    void SetUp() override {
        ScriptModeTest::SetUp();
        primary.Set(layout.Primary());
    }
    static std::string Escaped(const std::string& text) {
        std::string escaped;
        for (const char c : text) {
            if (c == '\\' || c == '"') escaped += '\\';
            escaped += c;
        }
        return escaped;
    }
    static std::string Selected(int valid, int itemNumber, const std::string& path = std::string(),
                                const std::string& name = std::string()) {
        return "{\"event\":\"ItemSel\",\"valid\":" + std::to_string(valid) +
               ",\"itemNumber\":" + std::to_string(itemNumber) + ",\"path\":\"" + Escaped(path) +
               "\",\"name\":\"" + Escaped(name) + "\"}";
    }
    static std::string State(int cells, int selected, int current, int width, int height,
                             const std::string& treePath) {
        return "{\"state\":\"browser\",\"cells\":" + std::to_string(cells) +
               ",\"selectedIndex\":" + std::to_string(selected) +
               ",\"currentIndex\":" + std::to_string(current) + ",\"cellWidth\":" + std::to_string(width) +
               ",\"cellHeight\":" + std::to_string(height) + ",\"treePath\":\"" + Escaped(treePath) + "\"}";
    }
    std::vector<std::string> Lines() const {
        std::vector<std::string> lines;
        size_t start = 0;
        while (start < output.size()) {
            const size_t end = output.find('\n', start);
            lines.push_back(output.substr(start, end == std::string::npos ? std::string::npos : end - start));
            start = end == std::string::npos ? output.size() : end + 1;
        }
        return lines;
    }
    std::string Animals() const { return layout.Path("Animals.QLT"); }

    browsertest::ArtLayout& layout = browsertest::SharedLayout();
    browsertest::ScopedPrimaryFolder primary{std::nullopt};
};

TEST_F(ScriptedBrowserTest, TreeComboAndGalleryClicksReportEachSelection) {
    ASSERT_EQ(0, Run("combo Orrimond\n"
                     "tree Animals\n"
                     "state\n"
                     "click 2\n"
                     "state\n"
                     "dblclick 3\n"
                     "state\n"))
        << errors;
    const std::vector<std::string> expected = {
        Selected(0, 0),  // the combo rebuilt the tree
        Selected(0, 0),  // a leaf is selected: first nothing
        Selected(1, 1, Animals()),
        State(5, 0, 0, 145, 179, "Animals"),
        Selected(1, 3, Animals()),  // the third cell
        State(5, 2, 2, 145, 179, "Animals"),
        Selected(1, 4, Animals()),  // the click before the double click
        Selected(1, 4, Animals()),  // the double click: the record as it stands, then the event
        "{\"event\":\"ItemDBClick\"}",
        State(5, 3, 3, 145, 179, "Animals"),
    };
    EXPECT_EQ(expected, Lines()) << output;
}

TEST_F(ScriptedBrowserTest, SetItemPathIntoAContainerSelectsTheItem) {
    ASSERT_EQ(0, Run("SetItemPath " + layout.Path("lower\\cats") + " 2\nstate\n")) << errors;
    const std::string cats = layout.Path("lower\\cats.QLT");
    const std::vector<std::string> expected = {
        Selected(0, 0),        // the combo's rebuild
        Selected(0, 0),        // the leaf's first word
        Selected(1, 1, cats),  // the container shown
        Selected(1, 2, cats),  // the position the host asked for
        State(3, 1, 1, 145, 179, "lower\\cats"),
    };
    EXPECT_EQ(expected, Lines()) << output;
}

TEST_F(ScriptedBrowserTest, ADoubleClickOnAPictureInTheTreeDeliversIt) {
    ASSERT_EQ(0, Run("combo Orrimond\ntree Types\\photo.jpg\ndblclick-tree\n")) << errors;
    const std::string photo = layout.Path("Types\\photo.jpg");
    const std::vector<std::string> expected = {
        Selected(0, 0),
        Selected(0, 0),
        Selected(1, 0, photo),               // combo, tree: the preview
        Selected(1, 0, photo),               // the double click renders again,
        Selected(1, 1, photo, "photo.jpg"),  // then delivers the file
        "{\"event\":\"ItemDBClick\"}",
    };
    EXPECT_EQ(expected, Lines()) << output;
}

TEST_F(ScriptedBrowserTest, KeysTakeTheControlsKeyboardRoad) {
    ASSERT_EQ(0, Run("combo Orrimond\n"
                     "tree Animals\n"
                     "click 0\n"
                     "key Right\n"
                     "key Left\n"
                     "alt S\n"
                     "state\n"
                     "alt A\n"
                     "get AspectRatio\n"
                     "alt L\n"
                     "get thumbNailState\n"
                     "key F5\n"
                     "state\n"))
        << errors;
    const std::vector<std::string> expected = {
        Selected(0, 0),
        Selected(0, 0),
        Selected(1, 1, Animals()),
        Selected(1, 1, Animals()),          // click 0
        Selected(1, 2, Animals()),          // Right
        Selected(1, 1, Animals()),          // Left
        State(5, 0, 0, 72, 90, "Animals"),  // Alt+S: small cells, the selection kept by number
        "{\"property\":\"AspectRatio\",\"value\":1}",
        "{\"property\":\"thumbNailState\",\"value\":1}",
        Selected(0, 0),  // F5 rebuilds the tree from the combo's entry
        State(0, 0, 0, 0, 0, ""),
    };
    EXPECT_EQ(expected, Lines()) << output;
}

TEST_F(ScriptedBrowserTest, CommandsThatFindNothingFail) {
    EXPECT_EQ(1, Run("combo Orrimond\ntree Animals\\nothing\n"));
    EXPECT_NE(std::string::npos, errors.find("tree: no node 'nothing'")) << errors;
    EXPECT_EQ(1, Run("combo Nowhere\n"));
    EXPECT_NE(std::string::npos, errors.find("combo: no entry 'Nowhere'")) << errors;
    EXPECT_EQ(1, Run("combo Orrimond\ntree Animals\nclick 5\n"));
    EXPECT_NE(std::string::npos, errors.find("the gallery has 5 cells, no cell 5")) << errors;
    EXPECT_EQ(2, Run("click first\n"));
    EXPECT_EQ(2, Run("state now\n"));
}

TEST_F(ScriptModeTest, AnUnregisteredControlIsAFailure) {
    ocx.unregisterServer();
    EXPECT_EQ(1, Run("get AspectRatio\n"));
    EXPECT_TRUE(output.empty());
    EXPECT_NE(std::string::npos, errors.find("AtlAxCreateControlEx")) << errors;
}

}  // namespace
}  // namespace controltest
