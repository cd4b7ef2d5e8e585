// Numbers of resources and child windows; programs that drive the workbench from outside find its windows by these.
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
    idToolbar,
    idTitle,
    idIdentifier,
    idType,
    idUpdate,
    idLocked,
    idDragDrop,
    idShowIdentifier,
    idCounts,

    // The controls of the hierarchy, of the locks and of the lesson map.
    idTree = 250,
    idLessonInfo,
    idLockInfo,
    idSingleExpand,
    idLocks,
    idDisplay,
    idAdministrator,
    idEntry,
    idDelete,
    idMap,
    idSearch,
    idFind,
    idWrap,
    idExact,
    idCheckboxes,
    idDefaultMapOnly,
    idByIdentifier,
    idDesign,

    // Tools.
    idSave = 300,
    idUndo,
    idRedo,
    idAddGroup,
    idAddLesson,
    idAddStoryboard,
    idRemove,
    idUp, // the movements, in the order of their numbers
    idDown,
    idIndent,
    idOutdent,
    idNextMap,
    idPreviousMap,
    idExpandAll,
    idCollapseAll,
    idFreeze,
    idCheckAll,
    idUncheckAll,
    idOpen,
    idRename,
    idSearchFor, // leads to the field
    idSelectAll,
    idContextMenu,

    // Of the frame's menus.
    idNextPage = 400,
    idPreviousPage,
    idPageList,
    idRefresh,
    idCopyEvents,
    idSelfTest,
    idExit,
    idShowFirst = 420, // shows page n

    idLabel = 499, // texts that are never looked up by number
};

} // namespace dax::workbench
