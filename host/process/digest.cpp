#include "host/process/digest.h"

#include <fmt/format.h>
#include <openssl/evp.h>

#include <array>
#include <stdexcept>

namespace pelagrim_host {
namespace {

void require(bool done) {
  if (!done) throw std::runtime_error("the library for checksums has failed");
}

EVP_MD_CTX* handle(const std::shared_ptr<void>& context) {
  return static_cast<EVP_MD_CTX*>(context.get());
}

}  // namespace

Digest::Digest(Kind kind)
    : context_(EVP_MD_CTX_new(),
               [](void* gone) { EVP_MD_CTX_free(static_cast<EVP_MD_CTX*>(gone)); }) {
  const EVP_MD* const method = kind == Kind::kSha256 ? EVP_sha256() : EVP_sha512();
  require(context_ != nullptr && EVP_DigestInit_ex(handle(context_), method, nullptr) == 1);
}

void Digest::add(std::span<const std::byte> bytes) {
  require(EVP_DigestUpdate(handle(context_), bytes.data(), bytes.size()) == 1);
}

std::string Digest::hex() {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest = {};
  unsigned int length = 0;
  require(EVP_DigestFinal_ex(handle(context_), digest.data(), &length) == 1);
  std::string text;
  for (unsigned int i = 0; i < length; ++i) text += fmt::format("{:02x}", digest[i]);
  return text;
}

std::string sha256Of(std::string_view text) {
  Digest digest(Digest::Kind::kSha256);
  digest.add(std::as_bytes(std::span(text)));
  return digest.hex();
}

}  // namespace pelagrim_host
