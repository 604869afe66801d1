// What set and copy share: the name of their source.
#pragma once

namespace zetpxl {

inline constexpr char kSetCopySource[] = "zetsce";

}  // namespace zetpxl
