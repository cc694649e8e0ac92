' Shows what an MP3 file is, sets its cue point and saves it.
'
'   cscript //nologo tag_file.vbs C:\music\jingle.mp3
'
' On 64-bit Windows the 32-bit component needs the 32-bit interpreter:
' C:\Windows\SysWOW64\cscript.exe
Option Explicit

Dim header, id
Set header = CreateObject("Brindle.cMPEGHeader")

' Assigning the name reads the file. A file that is missing or no MP3 leaves FileName empty.
header.FileName = WScript.Arguments(0)
If header.FileName = "" Or header.TagType = -1 Then
    WScript.Echo "Not an MP3 file with a tag: " & WScript.Arguments(0)
    WScript.Quit 1
End If

WScript.Echo header.Title & " by " & header.Artist
WScript.Echo "Length: " & header.ElapsedTimeFromMs(header.Duration)
WScript.Echo "Cue in: " & header.CueInmSStart & " ms"
For Each id In header.v2Frames
    WScript.Echo "Frame " & id
Next

' Assignments change memory only; SaveAllInfo writes them and is the one member that may fail.
header.CueInmSStart = 250
header.CustomFieldAdd "Checked by", "tag_file.vbs"
On Error Resume Next
header.SaveAllInfo
If Err.Number <> 0 Then
    WScript.Echo "Not saved: " & Err.Description & " (" & Err.Source & ", " & Err.Number & ")"
    WScript.Quit 1
End If
On Error GoTo 0
WScript.Echo "Done."
