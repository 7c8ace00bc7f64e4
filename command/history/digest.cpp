#include "command/history/digest.h"

#include <nettle/base16.h>
#include <nettle/sha2.h>

#include <array>
#include <cstdint>

namespace zamofw {

// Nettle needs nothing but the C library, so that it costs a start next to nothing. Many kernels
// have no digests for programs.
std::string digestOf(std::string_view text) {
    sha256_ctx state;
    sha256_init(&state);
    sha256_update(&state, text.size(), reinterpret_cast<const std::uint8_t*>(text.data()));
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest = {};
    sha256_digest(&state, digest.size(), digest.data());
    std::string digits(BASE16_ENCODE_LENGTH(SHA256_DIGEST_SIZE), '\0');
    base16_encode_update(digits.data(), digest.size(), digest.data());
    return digits;
}

}  // namespace zamofw
