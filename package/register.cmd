@echo off
rem Registers the controls for all users of this machine. Run it as administrator.
cd /d "%~dp0"
regsvr32 /s contentObjects.dll || goto failed
regsvr32 /s daxControls33.ocx || goto failed
echo Registered.
exit /b 0
:failed
echo The controls could not be registered. Run this as administrator, with the regsvr32 of the right bitness.
exit /b 1
