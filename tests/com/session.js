// The same session in the other language of scripts, which calls in its own ways.
// usage: cscript session.js <MP3 file, which is changed>

var checks = 0;
var failures = 0;

function check(what, found, expected) {
    checks++;
    if (found !== expected) {
        failures++;
        WScript.Echo("FAILED " + what + ": " + found + " (" + typeof found + "), not " + expected);
    }
}

function numberOfError(action) {
    try {
        action();
        return 0;
    } catch (error) {
        return error.number;
    }
}

var name = WScript.Arguments(0);
var header = new ActiveXObject("Brindle.cMPEGHeader");

check("new Title", header.Title, "");
check("new TagType", header.TagType, -1);
check("new v2Frames", header.v2Frames, null);
check("new Category", header.Category, undefined);
check("SaveAllInfo without a file", numberOfError(function () { header.SaveAllInfo(); }), -896556);
check("Layer without a file", numberOfError(function () { return header.Layer; }), -2146828197);

header.FileName = name;
check("FileName", header.FileName, name);
check("Title", header.Title, "Good Morning");
check("BitRate", header.BitRate, 128000);
check("VBR", header.VBR, false);
check("Speed", header.Speed, 1.5);
check("Opener", header.Opener, -1);
check("Category", header.Category, "Jingle");
check("v2Tag", header.v2Tag("TPE1", 1), "The Early Shift");
check("time", header.ElapsedTimeFromMs(62345, 1), ".34");
check("time by default", header.ElapsedTimeFromMs(62345), "01:02");
check("size of the tag", header.ID3TagSizeIncludingHeader() > 500, true);

var ids = [];
for (var all = new Enumerator(header.v2Frames); !all.atEnd(); all.moveNext()) {
    ids.push(all.item());
}
check("Enumerator", ids.join(" "),
      "TIT2 TPE1 TRCK TALB TCON TYER TXXX TCOM COMM TPUB TCOP WOAR APIC");
var frames = header.v2Frames;
check("Count", frames.Count, 13);
check("Item", frames.Item(2), "TPE1");
check("Item by key", frames.Item("TXXX"), "TXXX");
check("Exists", frames.Exists("NONE"), false);
check("item that is missing", numberOfError(function () { frames.Item(0); }), -2146828279);

header.Title = "Caf\u00e9 \u20ac";
header.Year = 2001.5;
header.Volume = "70";
header.Speed = "1.25";
header.Album = 17;
header.Category = true;
header.CustomFieldAdd("Mine", 0.1);
header.SaveAllInfo();

header.FileName = name;
check("saved Title", header.Title, "Caf\u00e9 \u20ac");
check("saved Year", header.Year, 2002);
check("saved Volume", header.Volume, 70);
check("saved Speed", header.Speed, 1.25);
check("saved Album", header.Album, "17");
check("saved Category", header.Category, "-1");
check("saved custom field", header.CustomFieldRetrieve("Mine"), "0.1");
check("frames of before", frames.Count, 13);
check("type mismatch", numberOfError(function () { header.Year = "soon"; }), -2147352571);

check("StripTags", header.StripTags(3), true);
check("left", header.TagType, -1);

WScript.Echo("session complete: " + checks + " checks, " + failures + " failed");
