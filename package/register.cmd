@echo off
rem Registers the controls for all users of this machine. Run it as administrator.
cd /d "%~dp0"
regsvr32 /s contentObjects.dll
if errorlevel 1 goto failed
regsvr32 /s daxControls33.ocx
if errorlevel 1 goto failed
echo Registered.
exit /b 0
:failed
echo The controls could not be registered. Run this as administrator.
exit /b 1
