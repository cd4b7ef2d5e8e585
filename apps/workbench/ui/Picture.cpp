#include "ui/Picture.h"

#include "automation/Automation.h"

#include <initguid.h>
#include <wincodec.h>

#include <memory>
#include <type_traits>

namespace dax::workbench {

namespace {

struct DeleteBitmap {
    void operator()(HBITMAP bitmap) const { DeleteObject(bitmap); }
};
using Bitmap = std::unique_ptr<std::remove_pointer_t<HBITMAP>, DeleteBitmap>;

Bitmap Capture(HWND window, int& width, int& height, BYTE*& pixels) {
    RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN | RDW_ERASE);
    GdiFlush();
    RECT area;
    GetClientRect(window, &area);
    width = area.right;
    height = area.bottom;
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
    const HDC source = GetDC(window);
    const HDC target = CreateCompatibleDC(source);
    void* bits = nullptr;
    Bitmap bitmap(CreateDIBSection(source, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    if (bitmap) {
        const HGDIOBJ before = SelectObject(target, bitmap.get());
        if (!BitBlt(target, 0, 0, width, height, source, 0, 0, SRCCOPY)) bitmap.reset();
        SelectObject(target, before);
        GdiFlush();
    }
    DeleteDC(target);
    ReleaseDC(window, source);
    pixels = static_cast<BYTE*>(bits);
    return bitmap;
}

UINT Stride(int width) { return (static_cast<UINT>(width) * 3 + 3) & ~3u; }

} // namespace

Pixels CapturePixels(HWND window) {
    int width = 0;
    int height = 0;
    BYTE* rows = nullptr;
    const Bitmap bitmap = Capture(window, width, height, rows);
    if (!bitmap) throw HostError(E_FAIL, L"The window's picture could not be taken.");
    Pixels pixels;
    for (int y = 0; y < height; ++y) {
        const BYTE* row = rows + static_cast<size_t>(y) * Stride(width);
        pixels.insert(pixels.end(), row, row + static_cast<size_t>(width) * 3);
    }
    return pixels;
}

void SavePicture(HWND window, const std::wstring& path) {
    int width = 0;
    int height = 0;
    BYTE* pixels = nullptr;
    const Bitmap bitmap = Capture(window, width, height, pixels);
    if (!bitmap) throw HostError(E_FAIL, path + L": the window's picture could not be taken.");

    ComPtr<IWICImagingFactory> factory;
    ComPtr<IWICStream> stream;
    ComPtr<IWICBitmapEncoder> encoder;
    ComPtr<IWICBitmapFrameEncode> frame;
    WICPixelFormatGUID format = GUID_WICPixelFormat24bppBGR;
    const UINT rows = static_cast<UINT>(height);
    const UINT stride = Stride(width);
    HRESULT result = S_OK;
    const auto then = [&result](auto&& step) {
        if (SUCCEEDED(result)) result = step();
    };
    then([&] {
        return CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory,
                                factory.OutVoid());
    });
    then([&] { return factory->CreateStream(stream.Out()); });
    then([&] { return stream->InitializeFromFilename(path.c_str(), GENERIC_WRITE); });
    then([&] { return factory->CreateEncoder(GUID_ContainerFormatPng, nullptr, encoder.Out()); });
    then([&] { return encoder->Initialize(stream.Get(), WICBitmapEncoderNoCache); });
    then([&] { return encoder->CreateNewFrame(frame.Out(), nullptr); });
    then([&] { return frame->Initialize(nullptr); });
    then([&] { return frame->SetSize(static_cast<UINT>(width), rows); });
    then([&] { return frame->SetPixelFormat(&format); });
    then([&] { return format == GUID_WICPixelFormat24bppBGR ? S_OK : E_FAIL; });
    then([&] { return frame->WritePixels(rows, stride, stride * rows, pixels); });
    then([&] { return frame->Commit(); });
    then([&] { return encoder->Commit(); });
    if (FAILED(result)) throw HostError(result, path + L": " + DescribeResult(result));
}

} // namespace dax::workbench
