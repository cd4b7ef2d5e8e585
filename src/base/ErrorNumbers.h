// Every error number that hosts see, with its meaning: the one table, from which docs/errors.md comes
// (tools/lib/errors.py, which also lists the modules that raise each number).
#pragma once

#include <cstdint>

namespace dax {

// The numbers of ADO, automation, Visual Basic and tree views. They are part of the interface: hosts
// compare them, so none is ever changed.
namespace ErrorNumbers {

// # Of databases, and of values read from them

// out of memory
inline constexpr int32_t OutOfMemory = 7;
// a value cannot be converted to the required type
inline constexpr int32_t TypeMismatch = 13;
// a file cannot be read or written, or, from `DatabaseValidator`, none is selected, it is missing, or it is read-only
inline constexpr int32_t PathFileAccess = 75;
// NULL where a value is required
inline constexpr int32_t InvalidUseOfNull = 94;
// refused by a control itself
inline constexpr int32_t Automation = -2147221504;
// not saved: another author has changed the hierarchy, and `ConflictCheck` is on
inline constexpr int32_t Conflict = -2147221503;
// the account may not do this
inline constexpr int32_t Permission = -2147217911;
// a value does not fit the column's type
inline constexpr int32_t DataMismatch = -2147217913;
// a statement with an unknown column or wrong syntax
inline constexpr int32_t SyntaxOrColumn = -2147217900;
// a row would break a rule of its table
inline constexpr int32_t Integrity = -2147217873;
// waited too long, for a server or for a lock; for a server the text says which one and how long, see
// [connections](connections.md#how-long-a-call-waits)
inline constexpr int32_t Timeout = -2147217871;
// there is no such table
inline constexpr int32_t NoTable = -2147217865;
// the user name or password was refused
inline constexpr int32_t Authentication = -2147217843;
// a value is too large
inline constexpr int32_t DataOverflow = -2147217833;
// any other failure, such as a file, a server or a catalog that cannot be opened
inline constexpr int32_t Unspecified = -2147467259;

// # Of collections, trees and lessons

// a call or an argument that is not valid here, such as nothing to add, or no element of that key
inline constexpr int32_t InvalidCall = 5;
// a tree with more nodes than can be counted
inline constexpr int32_t Overflow = 6;
// no element at that place
inline constexpr int32_t OutOfRange = 9;
// the stored text of a lesson is not valid; the description names the line
inline constexpr int32_t InvalidFormat = 321;
// an object of the host lacks a member that is needed
inline constexpr int32_t NoSuchMember = 438;
// the collection has an element of that key already
inline constexpr int32_t KeyExists = 457;
// the tree has no node at that place
inline constexpr int32_t IndexOutOfBounds = 35600;
// the tree has no node of that key, or the node is no longer in it
inline constexpr int32_t ElementNotFound = 35601;
// two nodes would have the same key; from `LoadDatabase`: two rows have the same lessonID
inline constexpr int32_t DuplicateKey = 35602;

} // namespace ErrorNumbers

// Codes of COM's own interfaces, which have no description. The COM shell uses the system's names for them.
//
// # Of COM
//
// CLASS_E_CLASSNOTAVAILABLE = 80040111: the library has no such class, or the class cannot be created alone
// CLASS_E_NOAGGREGATION = 80040110: a control was to be part of another object
// CONNECT_E_CANNOTCONNECT = 80040202: an event sink lacks the interface of the events
// CONNECT_E_NOCONNECTION = 80040200: there is no such event sink, or no such event interface
// CO_E_ALREADYINITIALIZED = 800401F1: the properties of a control are loaded for the second time
// CO_E_OBJNOTCONNECTED = 800401FD: the window that a screen reader examines is gone
// DISP_E_BADINDEX = 8002000B: a type description other than the first was requested
// DISP_E_MEMBERNOTFOUND = 80020003: another member of an object that only receives events was called
// DISP_E_UNKNOWNINTERFACE = 80020001: a reserved argument of `IDispatch` is not IID_NULL
// DISP_E_UNKNOWNNAME = 80020006: an object that only receives events has no members to call by name
// DV_E_DVASPECT = 8004006B: another view than the content, such as an icon, was requested
// DV_E_FORMATETC = 80040064: a control's data was requested in a format that it does not have
// DV_E_TYMED = 80040069: the same, on a medium that it does not have
// E_FAIL = 80004005: the system refused something, such as a window or a drawing
// E_INVALIDARG = 80070057: an argument is not valid, such as stored properties that are damaged
// E_NOINTERFACE = 80004002: the object has no such interface
// E_NOTIMPL = 80004001: a member of an interface that a control does not support
// E_OUTOFMEMORY = 8007000E: out of memory; 7 in scripts
// E_POINTER = 80004003: there is no place for the result
// E_UNEXPECTED = 8000FFFF: an unknown failure inside the library
// INPLACE_E_NOTUNDOABLE = 800401A0: a container requested to undo its last activation
// OLE_E_ADVISENOTSUPPORTED = 80040003: a container requested notifications that a control does not send
// OLE_E_NOCONNECTION = 80040004: such a registration does not exist
// OLE_E_NOTRUNNING = 80040005: the control cannot be activated without a container

} // namespace dax
