// Incremental SHA-256 (OpenSSL EVP, hardware instructions where the processor has them).
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace morvane {

class Sha256 {
public:
    /// The digest is fetched once per process; a context is reused by reset().
    Sha256();
    ~Sha256();
    Sha256(Sha256&&) noexcept;
    Sha256& operator=(Sha256&&) noexcept;

    void reset();
    void update(const void* bytes, std::size_t count);
    void update(std::string_view bytes) { update(bytes.data(), bytes.size()); }
    /// 64 lower-case hexadecimal characters. Call reset() before feeding again.
    std::string finish();

private:
    struct Context;
    std::unique_ptr<Context> context_;
};

}  // namespace morvane
