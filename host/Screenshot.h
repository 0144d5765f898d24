// Pictures of a window as PNG files, for the script mode's screenshots.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace host {

// Encodes `rgb` (rows top to bottom, 3 bytes a pixel) as a PNG file; false
// when the file cannot be written.
bool WritePng(const std::string& path, int width, int height, const std::vector<uint8_t>& rgb);

// The window as it draws itself (PrintWindow, children included), with its
// frame. False when it has no size or cannot be drawn.
bool CaptureWindow(HWND window, int* width, int* height, std::vector<uint8_t>* rgb);

}  // namespace host
