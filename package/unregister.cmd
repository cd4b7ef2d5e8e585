@echo off
rem Takes the registration of the controls back. Run it as administrator, before the files are removed.
cd /d "%~dp0"
set result=0
regsvr32 /s /u daxControls33.ocx || set result=1
regsvr32 /s /u contentObjects.dll || set result=1
if %result%==0 (echo Unregistered.) else (echo Not everything could be unregistered. Run this as administrator.)
exit /b %result%
