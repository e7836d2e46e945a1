#pragma once

namespace zel::host {

#ifdef __SANITIZE_ADDRESS__
inline constexpr bool underAddressSanitizer = true;
#else
inline constexpr bool underAddressSanitizer = false;
#endif

#ifdef __SANITIZE_THREAD__
inline constexpr bool underThreadSanitizer = true;
#else
inline constexpr bool underThreadSanitizer = false;
#endif

}  // namespace zel::host
