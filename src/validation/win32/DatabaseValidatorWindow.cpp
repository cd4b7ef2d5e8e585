#include "validation/win32/DatabaseValidatorWindow.h"

#include "controls/win32/MessagePump.h"

namespace dax {

DatabaseValidatorWindow::DatabaseValidatorWindow()
    : WindowBase(L"DAXDatabaseValidator"), changedListener(validator->Changed.Add([this] { ShowTexts(); })) {
    validator->ProcessMessages = ProcessPendingMessages;
}

DatabaseValidatorWindow::~DatabaseValidatorWindow() = default;

SIZE DatabaseValidatorWindow::PreferredSize(int dpi) const { return {MulDiv(360, dpi, 96), MulDiv(120, dpi, 96)}; }

void DatabaseValidatorWindow::OnAmbient() {
    const bool isDesign = !CurrentAmbient().userMode;
    if (isDesign)
        validator->ShowDesignSample(CurrentAmbient().displayName);
    else if (isDesignMode || !wasPlaced) // at run time an ambient change leaves the outcome as it is
        validator->LeaveDesignMode();
    isDesignMode = isDesign;
    wasPlaced = true;
}

void DatabaseValidatorWindow::Paint(HDC dc, SIZE size, bool) {
    const Ambient& ambient = CurrentAmbient();
    const StatusPanelMetrics metrics = StatusPanelMetrics::ForDpi(ambient.dpi);
    GdiSurface surface(dc, size, Font(), BoldFont(), ambient.foreColor, ambient.backColor, ambient.dpi);
    PaintStatusPanel(surface, validator->Display(), metrics);
    pictures.Draw(dc, validator->Display().picture, metrics.PicturePlace(), ambient.backColor);
}

void DatabaseValidatorWindow::OnCreate() {
    accessible.Connect(Handle());
    ShowTexts();
}

std::vector<Text> DatabaseValidatorWindow::Paragraphs() const {
    const StatusDisplay& display = validator->Display();
    std::vector<Text> paragraphs{display.statusTitle, display.statusMessage, display.detailTitle, display.detailText};
    std::erase(paragraphs, Text());
    return paragraphs;
}

// The texts are the window's text as well, for screen readers and other programs.
void DatabaseValidatorWindow::ShowTexts() {
    if (!Handle()) return;
    Text all;
    for (const Text& paragraph : Paragraphs()) all += (all.empty() ? u"" : u"\n") + paragraph;
    SetWindowTextW(Handle(), Wide(all));
    Repaint();
    accessible.Changed();
}

} // namespace dax
