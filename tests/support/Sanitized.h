#pragma once

// Whether a sanitizer watches: everything takes ten times as long, and memory is its own business.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool IsSanitized = true;
#elif defined(__has_feature)
inline constexpr bool IsSanitized =
    __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
inline constexpr bool IsSanitized = false;
#endif
