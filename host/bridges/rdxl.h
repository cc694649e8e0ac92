// What Rivendell keeps in one user-defined text, "rdxl": XML of a cart, which is what a scheduler
// plays, and its cuts, which are the audio.
//
//     <cart>
//       <title>Good Morning</title>
//       <cutList>
//         <cut>
//           <startPoint>120</startPoint>
//           <endPoint>5564</endPoint>
//           <segueStartPoint>5200</segueStartPoint>
//           <segueEndPoint>5564</segueEndPoint>
//           <talkStartPoint>0</talkStartPoint>
//           <talkEndPoint>1500</talkEndPoint>
//         </cut>
//       </cutList>
//     </cart>
//
// Points are ms, -1 for none. An element stands on a line of its own, since Rivendell reads lines.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <brindle/tag_facts.h>

#include "bridges/points.h"

namespace brindle::host {

inline constexpr std::u16string_view kRdxlName = u"rdxl";

// Why this program can't read XML, or nothing.
[[nodiscard]] std::optional<std::string> reason_against_rdxl();

// Raises BridgeError if the text is not XML of a cart.
[[nodiscard]] SystemPoints read_rdxl(const TagFacts& facts);
// Nothing if the file's rdxl already has these points. The rest of an existing rdxl does not
// change. Raises BridgeError if it is not XML of a cart, or has no place for a point.
[[nodiscard]] std::vector<CustomField> rdxl_to_write(const WantedPoints& wanted,
                                                     const TagFacts& facts);

}  // namespace brindle::host
