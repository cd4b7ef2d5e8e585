// Pictures of our own windows.
#pragma once

#include <windows.h>

#include <string>

namespace dax::workbench {

// Writes what the window's inside shows as a PNG file. Throws HostError, the file named.
void SavePicture(HWND window, const std::wstring& path);

} // namespace dax::workbench
