// The test container's script mode: `--script FILE` runs one command a line
// against the hosted control and prints each event, and each property read,
// as one JSON line on standard output.
//
// Commands (blank lines and lines starting with # are skipped):
//   SetItemPath PATH N        RefreshCombo TEXT B        DoubleClickFlag B
//   RefreshControl            RedrawBitmaps
//   set AspectRatio B         set thumbNailState B
//   get AspectRatio           get thumbNailState   -> {"property":...,"value":...}
//   tree PATH                 select a tree node, as a click would
//   combo TEXT                choose a drive combo entry
//   click N, dblclick N       gallery cell N, by mouse messages
//   dblclick-tree             a double click on the tree's selected node
//   key NAME, alt KEY         keys through the message loop
//   wait MS                   screenshot FILE.png
//   state                     the gallery's and the tree's state as JSON
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
