@echo off
rem Checks that the controls work on this machine, and writes one report that can be read or sent.
rem   selftest                                  the report is put among your documents, and shown
rem   selftest --report FILE                    the report is put there
rem   selftest --connection "CONNECTION"        tests that database, too, in an empty catalog of its own
rem docs\self-test.md explains it. Exit code: 0 all checks have passed, 1 at least one has failed.
setlocal
echo The self-test takes about a minute. Leave mouse and keyboard alone until it has ended.
"%~dp0DAXWorkbench.exe" --selftest %*
exit /b %ERRORLEVEL%
