// Numbers of resources and child windows; whoever drives the program from outside finds its windows by these.
#pragma once

namespace dax::workbench {

inline constexpr wchar_t frameClass[] = L"DAXWorkbench";

enum Ids : int {
    idIcon = 1,

    idPages = 100, // the list of pages
    idEvents,      // the event log
    idEventsClear,
    idEventsLabel,
    idStatus,
    idPageFirst = 120, // the window of page n is idPageFirst + n

    // Fields that several pages have, each page its own.
    idHeading = 200,
    idHint,
    idConnection,
    idBrowse,
    idCatalog,
    idSource,
    idUser,
    idAccessFile,
    idValidate,
    idTalk,
    idLoad,
    idRecord,
    idPanel,
    idPicker,
    idEnabled,
    idResult,
    idProblem,
    idLabel, // texts that nobody asks for by number
};

} // namespace dax::workbench
