// A page with an editor and fields for its selected entry: title, identifier and type. What was typed is applied when
// the fields are left; before anything is lost the user is asked.
#pragma once

#include "pages/FormPage.h"

#include <memory>
#include <string>

namespace dax::workbench {

class EntryPage : public FormPage {
public:
    void Apply() override;

protected:
    struct Entry {
        std::wstring title, identifier;
        int type = -1; // its place in the drop-down list; -1: none
        bool operator==(const Entry&) const = default;
    };

    using FormPage::FormPage;

    // Whether an entry is shown, which the fields change.
    virtual bool HasEntry() const = 0;
    // Passes the fields to the editor. A field may show less than there is, as of a title with several lines, so only
    // what differs from `before` was typed. Throws HostError when nothing was changed.
    virtual void Store(const Entry& typed, const Entry& before) = 0;
    // Fills the fields, and everything else that depends on the selection.
    virtual void ShowSelection() = 0;
    // False when nothing was saved.
    virtual bool Save() = 0;

    void ClearResult() override { ShowResult(isChanged ? L"Not yet saved." : L"", Tone::Plain); }
    // An edit by the user: runs it, then shows the selection.
    void Edit(const std::function<void()>& work);
    // Asks whether to save before changes are lost. False when the user cancels.
    bool ConfirmDiscard(const std::wstring& question);

    Entry Typed() const { return {FieldText(idTitle), FieldText(idIdentifier), Choice(idType)}; }
    bool IsTyped() const { return HasEntry() && Typed() != shown; }
    void Update();
    bool HasFieldFocus() const { return HasFocus(idTitle) || HasFocus(idIdentifier) || HasFocus(idType); }
    // For notifications of the fields; false for those of other children.
    bool HandleFieldNotification(int id, int notification);
    void EnableFields(bool enable) const;

    const Automation& Editor() const { return editor->Control(); }

    std::unique_ptr<ControlHost> editor; // null when it could not be created
    Entry shown;                         // as the fields showed it before anything was typed
    bool isChanged = false;              // since the last save
    bool isFrozen = false;               // the editor's display
};

} // namespace dax::workbench
