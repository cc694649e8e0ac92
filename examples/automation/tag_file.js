// Shows what an MP3 file is, sets its cue point and saves it.
//
//   cscript //nologo tag_file.js C:\music\jingle.mp3

var header = new ActiveXObject("Brindle.cMPEGHeader");

// Assigning the name reads the file. A file that is missing or no MP3 leaves FileName empty.
header.FileName = WScript.Arguments(0);
if (header.FileName == "" || header.TagType == -1) {
    WScript.Echo("Not an MP3 file with a tag: " + WScript.Arguments(0));
    WScript.Quit(1);
}

WScript.Echo(header.Title + " by " + header.Artist);
WScript.Echo("Length: " + header.ElapsedTimeFromMs(header.Duration));
WScript.Echo("Cue in: " + header.CueInmSStart + " ms");
for (var all = new Enumerator(header.v2Frames); !all.atEnd(); all.moveNext()) {
    WScript.Echo("Frame " + all.item());
}

// Assignments change memory only; SaveAllInfo writes them and is the one member that may fail.
header.CueInmSStart = 250;
header.CustomFieldAdd("Checked by", "tag_file.js");
try {
    header.SaveAllInfo();
} catch (error) {
    WScript.Echo("Not saved: " + error.description + " (" + error.number + ")");
    WScript.Quit(1);
}
WScript.Echo("Done.");
