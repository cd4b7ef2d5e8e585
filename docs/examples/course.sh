#!/bin/sh
# Makes a course, adds a group with a lesson to it, and shows what came of it: what a script does with the command line.
#   course.sh FILE          with dax in the PATH
set -eu
course=$1
dax sample "$course" --force --lessons 12
dax validate "$course"
cat >"$course.edits" <<'END'
add group "What's new" identifier NEW
add lesson "The first one" identifier NEW-1 in NEW
move NEW up
END
dax edit "$course" --file "$course.edits"
dax tree "$course" NEW
dax tree "$course" --json | grep -c '"type":"lesson"'
