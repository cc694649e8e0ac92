// What the program and the process that shrinks pictures agree on: the image comes on standard
// input, and the smaller one, or the reason why there is none, goes to standard output.
#pragma once

namespace brindle::host {

// The first argument; the second is the largest number of bytes.
inline constexpr char kShrinkPicture[] = "--shrink-picture";

inline constexpr int kMaxPictureSeconds = 10;  // of processor time

}  // namespace brindle::host
