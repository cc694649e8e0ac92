' A whole session of a script: every member, one real file, its copy, and the errors.
' usage: cscript session.vbs <MP3 file, which is changed>
Option Explicit

Dim checks, failures
checks = 0
failures = 0

Sub Check(what, found, expected)
    checks = checks + 1
    If CStr(found) <> CStr(expected) Then
        failures = failures + 1
        WScript.Echo "FAILED " & what & ": " & CStr(found) & ", not " & CStr(expected)
    End If
End Sub

Dim header, name, id, ids, field
name = WScript.Arguments(0)

' Before any file.
Set header = CreateObject("Brindle.cMPEGHeader")
Check "new g_InUse", header.g_InUse, False
Check "new Title", header.Title, ""
Check "new TagType", header.TagType, -1
Check "new Duration", header.Duration, 0
Check "new v2Frames", header.v2Frames Is Nothing, True
Check "new Category", IsEmpty(header.Category), True
Check "new TimeStyle", header.TimeStyle, 0
Check "new Writev1v2Separate", header.Writev1v2Separate, False

On Error Resume Next
header.SaveAllInfo
Check "error number", Err.Number, -896556
Check "error description", Err.Description, "FileName is Not set"
Check "error source", Err.Source, "Brindle"
Err.Clear
Dim layer
layer = header.Layer
Check "Layer without a file", Err.Number, 91
Err.Clear
On Error Goto 0

' A real file.
header.FileName = name
Check "FileName", header.FileName, name
Check "g_InUse", header.g_InUse, True
Check "MonoStereo", header.MonoStereo, "Joint Stereo"
Check "BitRate", header.BitRate, 128000
Check "VBR", header.VBR, False
Check "Layer", header.Layer, "3"
Check "Frequency", header.Frequency, 44100
Check "Duration over 5 s", header.Duration > 5000, True
Check "Duration under 6 s", header.Duration < 6000, True
Check "RepairRequired", header.RepairRequired, False
Check "TagType", header.TagType, 3
Check "FrameCount", header.FrameCount, 13
Check "size of the tag", header.ID3TagSizeIncludingHeader > 500, True
Check "Title", header.Title, "Good Morning"
Check "Artist", header.Artist, "The Early Shift"
Check "Album", header.Album, "Station Jingles"
Check "Year", header.Year, 2011
Check "Track", header.Track, 7
' Of the digits in parentheses the last one is not read.
Check "Genre", header.Genre, "1"
Check "Comments", header.Comments, "engWeekdays only"
Check "Composer", header.Composer, "A. Composer"
Check "Publisher", header.Publisher, "Meadow Lane Music"
Check "CopyRight", header.CopyRight, "2011 Meadow Lane Music"
Check "URL", header.URL, "http://www.example.com/early-shift"
Check "ArtistUrl", header.ArtistUrl, "http://www.example.com/early-shift"
Check "Speed", header.Speed, 1.5
Check "Volume", header.Volume, 95
Check "Opener", header.Opener, -1
Check "CueInmSStart", header.CueInmSStart, 120
Check "Sectone", header.Sectone, 5200
Check "Intro", header.Intro, 1500
Check "OutromsStart", header.OutromsStart, 4600
Check "CategoryLevel", header.CategoryLevel, "3"
Check "Category", header.Category, "Jingle"
Check "Endstyle", header.Endstyle, "Fade"
Check "NoFade", header.NoFade, 0
Check "Agency", header.Agency, "Hill & Dale"
Check "AccountExec", header.AccountExec, "J. Miller"
Check "Copy", header.Copy, "Good morning, every day at six"
Check "Titlev1Tag", header.Titlev1Tag, "Good Morning"
Check "artistv1Tag", header.artistv1Tag, "The Early Shift"
Check "Yearv1Tag", header.Yearv1Tag, 2011
Check "Commentv1", Left(header.Commentv1, 13), "Weekdays only"
Check "CustomFieldExists", header.CustomFieldExists("Cue In"), True
Check "CustomFieldExists of another", header.CustomFieldExists("cue in"), False
Check "CustomFieldRetrieve", header.CustomFieldRetrieve("Cue In"), "120"
Check "v2Tag", header.v2Tag("TIT2", 1), "Good Morning"
Check "v2Tag that is missing", header.v2Tag("TIT2", 2), ""
Check "time", header.ElapsedTimeFromMs(62345), "01:02"
Check "time with fractions", header.ElapsedTimeFromMs(62345, 2), "01:02.34"

' The ids of the frames.
ids = ""
For Each id In header.v2Frames
    ids = ids & id & " "
Next
Check "For Each", ids, "TIT2 TPE1 TRCK TALB TCON TYER TXXX TCOM COMM TPUB TCOP WOAR APIC "
Check "v2Frames.Count", header.v2Frames.Count, 13
Check "v2Frames.Item", header.v2Frames.Item(1), "TIT2"
Check "v2Frames by key", header.v2Frames("TPE1"), "TPE1"
Check "v2Frames.Exists", header.v2Frames.Exists("TXXX"), True
On Error Resume Next
id = header.v2Frames.Item(99)
Check "item that is missing", Err.Number, 9
Err.Clear
header.Track = "many"
Check "type mismatch", Err.Number, 13
Err.Clear
header.Track = 40000
Check "overflow", Err.Number, 6
Err.Clear
On Error Goto 0

' Every property.
header.g_InUse = False
Check "g_InUse set", header.g_InUse, False
header.TimeStyle = 2
Check "TimeStyle set", header.TimeStyle, 2
header.Writev1v2Separate = False
header.Speed = 0.75
header.Volume = 80
header.Opener = 0
header.CueInmSStart = 1
header.CategoryLevel = "12"
header.Title = "t"
header.NoFade = -1
header.Composer = "c"
header.Publisher = "p"
header.CopyRight = "r"
header.Agency = "g"
header.AccountExec = "e"
header.URL = "u"
header.Copy = "y"
header.Artist = "a"
header.Sectone = 2
header.Intro = 3
header.Category = 4.5
header.Album = "b"
header.Track = 5
header.Year = 1999
header.Comments = "m"
header.Endstyle = "s"
header.OutromsStart = 6
header.Genre = "18"
header.Commentv1 = "k"
header.CustomFieldAdd "Mine", True
header.Song = "o"
header.Test
header.SaveAllInfo

' What was saved, read by another object.
Set header = CreateObject("Brindle.cMPEGHeader")
header.FileName = name
Check "saved Speed", header.Speed, 0.75
Check "saved Volume", header.Volume, 80
Check "saved Opener", header.Opener, 0
Check "saved CueInmSStart", header.CueInmSStart, 1
Check "saved CategoryLevel", header.CategoryLevel, "12"
Check "saved Title", header.Title, "o"
Check "saved Titlev1Tag", header.Titlev1Tag, "t"
Check "saved NoFade", header.NoFade, -1
Check "saved Composer", header.Composer, "c"
Check "saved Publisher", header.Publisher, "p"
Check "saved CopyRight", header.CopyRight, "r"
Check "saved Agency", header.Agency, "g"
Check "saved AccountExec", header.AccountExec, "e"
Check "saved ArtistUrl", header.ArtistUrl, "u"
Check "saved Copy", header.Copy, "y"
Check "saved Artist", header.Artist, "a"
Check "saved artistv1Tag", header.artistv1Tag, "a"
Check "saved Sectone", header.Sectone, 2
Check "saved Intro", header.Intro, 3
Check "saved Category", header.Category, "4.5"
Check "saved Album", header.Album, "b"
Check "saved Track", header.Track, 5
Check "saved Year", header.Year, 1999
Check "saved Yearv1Tag", header.Yearv1Tag, 1999
Check "saved Comments", Right(header.Comments, 1), "m"
Check "saved Endstyle", header.Endstyle, "s"
Check "saved OutromsStart", header.OutromsStart, 6
Check "saved Genre", header.Genre, "1"
Check "saved Commentv1", RTrim(header.Commentv1), "k"
Check "saved custom field", header.CustomFieldExists("Mine"), True
Check "saved custom value", header.CustomFieldRetrieve("Mine"), "-1"
Check "audio is as long as before", header.Duration > 5000, True
Check "picture is still there", Len(header.v2Tag("APIC", 1)) > 100, True

' The ID3v1 record apart from the tag; one address under two names.
header.Writev1v2Separate = True
header.Title = "t2"
header.Artist = "a2"
header.Year = 1997
header.Titlev1Tag = "v"
header.artistv1Tag = "w"
header.Yearv1Tag = 1998
header.ArtistUrl = "x"
header.SaveAllInfo
header.FileName = name
Check "separate Title", header.Title, "t2"
Check "separate Artist", header.Artist, "a2"
Check "separate Year", header.Year, 1997
Check "separate Titlev1Tag", header.Titlev1Tag, "v"
Check "separate artistv1Tag", header.artistv1Tag, "w"
Check "separate Yearv1Tag", header.Yearv1Tag, 1998
Check "URL as set by its other name", header.URL, "x"

' One tag after the other.
Check "strip the record", header.StripTags(1), True
Check "left after the record", header.TagType, 2
Check "strip the tag", header.StripTags(2), True
Check "left after the tag", header.TagType, -1
Check "BitRate without tags", header.BitRate, 128000
Check "Title without tags", header.Title, ""

' A name that is not opened.
header.FileName = "song.wav"
Check "FileName of another kind", header.FileName, ""
header.SaveAllInfo

WScript.Echo "session complete: " & checks & " checks, " & failures & " failed"
