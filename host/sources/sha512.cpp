#include "host/sources/sha512.h"

#include <fmt/format.h>
#include <openssl/evp.h>

#include <array>
#include <memory>
#include <stdexcept>
#include <vector>

namespace pelagrim_host {

std::string sha512Of(ByteStream& stream, const StopFunction& stop) {
  const std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> context(EVP_MD_CTX_new(),
                                                                   EVP_MD_CTX_free);
  const auto require = [](bool done) {
    if (!done) throw std::runtime_error("the library for checksums has failed");
  };
  require(context && EVP_DigestInit_ex(context.get(), EVP_sha512(), nullptr) == 1);
  std::vector<std::byte> block(1 << 18);
  while (!stop()) {
    const size_t got = stream.read(block);
    require(EVP_DigestUpdate(context.get(), block.data(), got) == 1);
    if (got < block.size()) break;
  }
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest = {};
  unsigned int length = 0;
  require(EVP_DigestFinal_ex(context.get(), digest.data(), &length) == 1);
  std::string text;
  for (unsigned int i = 0; i < length; ++i) text += fmt::format("{:02x}", digest[i]);
  return text;
}

}  // namespace pelagrim_host
