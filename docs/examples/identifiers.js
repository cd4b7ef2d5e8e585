// Gives every lesson without a short identifier one: the number of its group and its own, such as "G2-07". Saves.
//   daxscript identifiers.js FILE     or     cscript //nologo identifiers.js FILE
// Exit code: 0 saved, or nothing to do; 1 the database could not be read or written.
var ltGroup = 0, ltLesson = 1;
var editor = new ActiveXObject("DAXControls.GroupEditor");
editor.ConnectionString = WScript.Arguments(0);

function twoDigits(number) {
    return (number < 10 ? "0" : "") + number;
}

function fail(what) {
    WScript.Echo(what + " has failed");
    WScript.Quit(1);
}

if (!editor.LoadDatabase()) fail("LoadDatabase");
var given = 0, groups = 0, lessons = 0;
for (var all = new Enumerator(editor.GetChildLessonIDCollection("")); !all.atEnd(); all.moveNext()) {
    var id = all.item(), type = editor.GetLessonType(id);
    if (type == ltGroup) {
        ++groups;
        lessons = 0;
    } else if (type == ltLesson) {
        ++lessons;
        if (editor.GetLessonIdentifier(id) == "") {
            var identifier = "G" + groups + "-" + twoDigits(lessons);
            editor.UpdateLesson(id, editor.GetLessonTitle(id), identifier, ltLesson);
            WScript.Echo(identifier + "  " + editor.GetLessonTitle(id));
            ++given;
        }
    }
}
if (given > 0 && !editor.SaveDatabase()) fail("SaveDatabase");
WScript.Echo(groups + " groups, " + given + " identifiers given");
WScript.Quit(0);
