@echo off
rem Unregisters the controls for all users of this machine. Run it as administrator, before the files are removed.
cd /d "%~dp0"
regsvr32 /s /u daxControls33.ocx
if errorlevel 1 goto failed
regsvr32 /s /u contentObjects.dll
if errorlevel 1 goto failed
echo Unregistered.
exit /b 0
:failed
echo The controls could not be unregistered. Run this as administrator.
exit /b 1
