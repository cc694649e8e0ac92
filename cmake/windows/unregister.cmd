@echo off
rem Takes the DLL of each width that this Windows runs out of the registry.
rem To be started as administrator.
if exist "%SystemRoot%\SysWOW64\regsvr32.exe" goto both

rem Windows of 32 bit.
"%SystemRoot%\System32\regsvr32.exe" /u /s "%~dp0x86\Brindle.dll"
exit /b %errorlevel%

:both
"%SystemRoot%\SysWOW64\regsvr32.exe" /u /s "%~dp0x86\Brindle.dll"
if errorlevel 1 exit /b %errorlevel%
"%SystemRoot%\System32\regsvr32.exe" /u /s "%~dp0x64\Brindle.dll"
exit /b %errorlevel%
