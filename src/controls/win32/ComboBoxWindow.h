// A drop-down list in a real window, or without one.
#pragma once

#include "controls/ComboBox.h"
#include "controls/win32/Windows.h"

#include <optional>

namespace dax {

class ComboBoxWindow : public ComboBox {
public:
    // The window is destroyed with its parent; the list stays. The parent forwards its messages.
    HWND Create(HWND parent);
    HWND Handle() const { return handle; }
    void OnHandleDestroyed() { handle = nullptr; }
    void SetFont(HFONT font);
    void FitWidth(int width);
    void HandleNotification(int code); // CBN_…; raises Click last

    // Shows this text instead of the list, for good.
    void ShowSample(std::optional<Text> text);
    const Text& ShownText() const;

    // Whether the key is for the list, not for the host: arrows, paging, opening; Enter and Escape while it is open.
    bool HandlesKey(WPARAM key) const;

    void Clear() override;
    void AddItem(const Text& text) override;
    void SetListIndex(int index) override;
    void SetEnabled(bool enabled) override;

private:
    void Fill();
    void PrepareDropDown();

    HWND handle = nullptr;
    std::optional<Text> sample;
};

} // namespace dax
