// Pictures of our own windows.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace dax::workbench {

// Writes what the window's inside shows as a PNG file. Throws HostError, the file named.
void SavePicture(HWND window, const std::wstring& path);

// The same as three bytes for each pixel, row by row. Throws HostError.
using Pixels = std::vector<unsigned char>;
Pixels CapturePixels(HWND window);

} // namespace dax::workbench
