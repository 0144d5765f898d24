// The test container's script mode: `--script FILE` runs one command a line
// against the hosted control and prints each event, and each property read,
// as one JSON line on standard output.
//
// Commands (blank lines and lines starting with # are skipped):
//   SetItemPath PATH N        RefreshCombo TEXT B        DoubleClickFlag B
//   RefreshControl            RedrawBitmaps
//   set AspectRatio B         set thumbNailState B
//   get AspectRatio           get thumbNailState   -> {"property":...,"value":...}
//   tree PATH                 expands the tree along PATH (node texts joined by a
//                             backslash, from the top) and clicks the last node
//   combo TEXT                opens the drive list and clicks the entry TEXT
//   click N, dblclick N       gallery cell N (from 0), by mouse messages at its
//                             centre; a cell off the page is scrolled to first
//   dblclick-tree             a double click on the tree's selected node
//   key NAME, alt KEY         keys posted to the focus and given out by the loop
//   wait MS                   pumps messages for MS milliseconds
//   screenshot FILE.png       the container's window as a PNG file
//   state                     -> {"state":"browser","cells":...,"selectedIndex":...,
//                                 "currentIndex":...,"cellWidth":...,"cellHeight":...,
//                                 "treePath":...}
//
// Events print as {"event":"ItemSel","valid":1,"itemNumber":3,"path":"...",
// "name":""} and {"event":"ItemDBClick"}.
//
// Exit status: 0 when every command ran; 1 when a command failed; 2 for an
// unknown command, a malformed one, or one that needs a part of the control
// that it does not have.
#pragma once

#include <string>

namespace host {

class ContainerWindow;

int RunScript(ContainerWindow& window, const std::string& path);

// Exposed for tests of the parser: splits "CMD rest" and "rest N".
bool SplitLastWord(const std::string& text, std::string* head, std::string* last);

}  // namespace host
