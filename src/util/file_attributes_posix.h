// Who may do what with a file, and what its users have noted on it.
#pragma once

#include <string>

namespace brindle {

// A new file must not be opened by others before it has its rights: takes an access control list
// off that its folder has given it.
void remove_inherited_access_list(int descriptor);

// Gives the open file the owner, group, mode, access control list and user attributes of the file
// at `path`. Rights never become wider: without the right to give a file away the owner is that of
// this process, and where the group cannot be kept either, the new group gets no more than others
// have. Set-id bits are kept only with both. User attributes that cannot be kept are left out.
// Error 70 when the access control list cannot be kept.
void copy_file_attributes(const std::string& path, int descriptor);

}  // namespace brindle
