Attribute VB_Name = "TagFile"
' Shows what an MP3 file is, sets its cue point and saves it.
'
' Set a reference to "Brindle: facts and tags of MP3 files" (Tools, References). With events it takes
' a class module or a form: Private WithEvents header As Brindle.cMPEGHeader.
Option Explicit

Public Sub SetCuePoint(ByVal FileName As String)
    Dim header As New Brindle.cMPEGHeader
    Dim id As Variant

    ' Assigning the name reads the file. A file that is missing or no MP3 leaves FileName empty.
    header.FileName = FileName
    If header.FileName = "" Then
        Debug.Print "Not an MP3 file: " & FileName
        Exit Sub
    End If

    Debug.Print header.Title & " by " & header.Artist
    Debug.Print "Length: " & header.ElapsedTimeFromMs(header.Duration, ShowAll)
    Debug.Print "Cue in: " & header.CueInmSStart & " ms"
    For Each id In header.v2Frames
        Debug.Print "Frame " & id
    Next

    ' Assignments change memory only; SaveAllInfo writes them and is the one member that may fail.
    header.CueInmSStart = 250
    header.CustomFieldAdd "Checked by", "TagFile.bas"
    On Error GoTo NotSaved
    header.SaveAllInfo
    Exit Sub

NotSaved:
    Debug.Print "Not saved: " & Err.Description & " (" & Err.Source & ", " & Err.Number & ")"
End Sub
