# Shows what an MP3 file is, sets its cue point and saves it.
#
#   .\Set-CuePoint.ps1 C:\music\jingle.mp3
#
# The 64-bit PowerShell needs the 64-bit component; the 32-bit one is in SysWOW64.
param([Parameter(Mandatory)][string]$FileName)

$header = New-Object -ComObject Brindle.cMPEGHeader

# Assigning the name reads the file. A file that is missing or no MP3 leaves FileName empty.
$header.FileName = (Resolve-Path -LiteralPath $FileName).ProviderPath
if ($header.FileName -eq '') {
    throw "Not an MP3 file: $FileName"
}

"$($header.Title) by $($header.Artist)"
"Length: $($header.ElapsedTimeFromMs($header.Duration, 2))"
"Cue in: $($header.CueInmSStart) ms"
foreach ($id in $header.v2Frames) {
    "Frame $id"
}

# Assignments change memory only; SaveAllInfo writes them and is the one member that may fail.
$header.CueInmSStart = 250
$header.CustomFieldAdd('Checked by', 'Set-CuePoint.ps1')
try {
    $header.SaveAllInfo()
} catch {
    throw "Not saved: $($_.Exception.Message)"
}
