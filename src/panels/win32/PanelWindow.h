// An information panel in a real window. Panel is LessonInfo or LockInfo; AllLines(panel) are all of its lines, whether
// they fit or not.
#pragma once

#include "base/Value.h"
#include "controls/win32/GdiSurface.h"
#include "controls/win32/TextAccessible.h"
#include "controls/win32/WindowBase.h"
#include "panels/PanelLayout.h"

#include <memory>

namespace dax {

template <typename Panel>
class PanelWindow : public WindowBase {
public:
    ~PanelWindow() override { info->Changed = nullptr; }

    // Callers must hold this pointer during the call: a listener may release the window.
    const std::shared_ptr<Panel>& Info() const { return info; }

    SIZE PreferredSize(int dpi) const override { return {MulDiv(220, dpi, 96), MulDiv(preferredHeight, dpi, 96)}; }

    Text PlainText() const override {
        Text all;
        for (const Text& line : Texts()) all += (all.empty() ? u"" : u"\r\n") + line;
        return all;
    }

protected:
    PanelWindow(const wchar_t* name, int heightAt96) : WindowBase(name), preferredHeight(heightAt96) {
        info->Changed = [this] {
            Repaint();
            accessible.Changed();
        };
    }

private:
    void OnCreate() override { accessible.Connect(Handle()); }
    void OnDestroyed() override { accessible.Disconnect(); }
    Accessible* AccessibleOf(HWND) override { return &accessible; }
    std::vector<Text> Texts() const {
        std::vector<Text> texts;
        for (const PanelLine& line : AllLines(*info))
            if (!line.text.empty() || !line.suffix.empty()) texts.push_back(line.text + line.suffix);
        return texts;
    }

    // The sample, or the empty panel, once the control is placed and whenever the host switches design mode.
    void OnAmbient() override {
        const bool isDesign = !CurrentAmbient().userMode;
        if (wasPlaced && isDesign == isDesignMode) return;
        wasPlaced = true;
        isDesignMode = isDesign;
        if (isDesign)
            info->ShowDesignSample(Now());
        else
            info->Clear();
    }

    void Paint(HDC dc, SIZE size, bool) override {
        const Ambient& ambient = CurrentAmbient();
        GdiSurface surface(dc, size, Font(), BoldFont(), ambient.foreColor, ambient.backColor, ambient.dpi);
        info->Paint(surface);
    }

    std::shared_ptr<Panel> info = std::make_shared<Panel>();
    TextAccessible accessible{[this] { return Texts(); }};
    int preferredHeight;
    bool wasPlaced = false, isDesignMode = false;
};

} // namespace dax
