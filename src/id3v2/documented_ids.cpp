#include "id3v2/documented_ids.h"

#include <algorithm>
#include <iterator>

namespace brindle {

namespace {

struct Successor {
    std::string_view version2;
    std::string_view later;
};

// In the order of the alphabet.
constexpr Successor kSuccessors[] = {
    {"BUF", "RBUF"}, {"CNT", "PCNT"}, {"COM", "COMM"}, {"CRA", "AENC"}, {"CRM", ""},
    {"ETC", "ETCO"}, {"EQU", "EQUA"}, {"GEO", "GEOB"}, {"GP1", "GRP1"}, {"IPL", "IPLS"},
    {"ITU", ""},     {"LNK", "LINK"}, {"MCI", "MCDI"}, {"MLL", "MLLT"}, {"MVI", "MVIN"},
    {"MVN", "MVNM"}, {"PCS", "PCST"}, {"PIC", "APIC"}, {"POP", "POPM"}, {"REV", "RVRB"},
    {"RVA", "RVAD"}, {"SLT", "SYLT"}, {"STC", "SYTC"}, {"TAL", "TALB"}, {"TBP", "TBPM"},
    {"TCM", "TCOM"}, {"TCO", "TCON"}, {"TCP", "TCMP"}, {"TCR", "TCOP"}, {"TCT", "TCAT"},
    {"TDA", "TDAT"}, {"TDR", "TDRL"}, {"TDS", "TDES"}, {"TDY", "TDLY"}, {"TEN", "TENC"},
    {"TFT", "TFLT"}, {"TID", "TGID"}, {"TIM", "TIME"}, {"TKE", "TKEY"}, {"TKW", "TKWD"},
    {"TLA", "TLAN"}, {"TLE", "TLEN"}, {"TMT", "TMED"}, {"TOA", "TOPE"}, {"TOF", "TOFN"},
    {"TOL", "TOLY"}, {"TOR", "TORY"}, {"TOT", "TOAL"}, {"TP1", "TPE1"}, {"TP2", "TPE2"},
    {"TP3", "TPE3"}, {"TP4", "TPE4"}, {"TPA", "TPOS"}, {"TPB", "TPUB"}, {"TRC", "TSRC"},
    {"TRD", "TRDA"}, {"TRK", "TRCK"}, {"TS2", "TSO2"}, {"TSA", "TSOA"}, {"TSC", "TSOC"},
    {"TSI", "TSIZ"}, {"TSP", "TSOP"}, {"TSS", "TSSE"}, {"TST", "TSOT"}, {"TT1", "TIT1"},
    {"TT2", "TIT2"}, {"TT3", "TIT3"}, {"TXT", "TEXT"}, {"TXX", "TXXX"}, {"TYE", "TYER"},
    {"UFI", "UFID"}, {"ULT", "USLT"}, {"WAF", "WOAF"}, {"WAR", "WOAR"}, {"WAS", "WOAS"},
    {"WCM", "WCOM"}, {"WCP", "WCOP"}, {"WFD", "WFED"}, {"WPB", "WPUB"}, {"WXX", "WXXX"},
};

const Successor* find_row(std::string_view id) noexcept {
    const auto* const row =
        std::find_if(std::begin(kSuccessors), std::end(kSuccessors),
                     [id](const Successor& successor) { return successor.version2 == id; });
    return row == std::end(kSuccessors) ? nullptr : row;
}

}  // namespace

std::string_view successor_of_version2_id(std::string_view id) noexcept {
    const Successor* const row = find_row(id);
    return row == nullptr ? std::string_view() : row->later;
}

bool is_version2_id(std::string_view id) noexcept {
    return find_row(id) != nullptr;
}

}  // namespace brindle
