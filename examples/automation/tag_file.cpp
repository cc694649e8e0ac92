// Shows what an MP3 file is, sets its cue point and saves it. Bound early: the compiler reads the
// interface from the type library, which lies beside the DLL of the same width.
//
//   cl /EHsc /std:c++17 /I ..\..\x86 tag_file.cpp    (32 bit)
//   cl /EHsc /std:c++17 /I ..\..\x64 tag_file.cpp    (64 bit)
//   tag_file C:\music\jingle.mp3
#include <cstdio>
#include <windows.h>

#import "Brindle.tlb" rename_namespace("Mp3")

namespace {

int set_cue_point(const wchar_t* name) {
    Mp3::_cMPEGHeaderPtr header(__uuidof(Mp3::cMPEGHeader));

    // Assigning the name reads the file. A file that is missing or no MP3 leaves FileName empty.
    // The interface takes the name by reference.
    _bstr_t file_name(name);
    BSTR by_reference = file_name.GetBSTR();
    header->PutFileName(&by_reference);
    if (header->FileName.length() == 0) {
        std::printf("Not an MP3 file: %ls\n", name);
        return 1;
    }

    std::printf("%ls by %ls\n", header->Title.GetBSTR(), header->Artist.GetBSTR());
    std::printf("Length: %ld ms\n", header->Duration);
    std::printf("Cue in: %ld ms\n", header->CueInmSStart);

    // Assignments change memory only; SaveAllInfo writes them and is the one member that may fail.
    header->CueInmSStart = 250;
    header->CustomFieldAdd(L"Checked by", L"tag_file.cpp");
    header->SaveAllInfo();
    return 0;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
    if (argc != 2) {
        std::puts("usage: tag_file <MP3 file>");
        return 2;
    }
    ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    int status = 1;
    try {
        status = set_cue_point(argv[1]);
    } catch (const _com_error& error) {
        std::printf("%ls (%ls, %ld)\n", static_cast<const wchar_t*>(error.Description()),
                    static_cast<const wchar_t*>(error.Source()), error.Error());
    }
    ::CoUninitialize();
    return status;
}
