#ifndef ORLINDEX_LIBRARY_TRUSTSIGNERS_H
#define ORLINDEX_LIBRARY_TRUSTSIGNERS_H

#include <functional>
#include <utility>

#include "support/PlatformImports.h"

namespace OrlindexTest {

/// Provider data with another number of signers than the file has.
class SignerCount
{
public:
    explicit SignerCount(DWORD count)
        : double_([this, count](HANDLE state) {
              data_ = *WTHelperProvDataFromStateDataDouble::Original(state);
              data_.csSigners = count;
              return &data_;
          })
    {
    }

private:
    CRYPT_PROVIDER_DATA data_{};
    WTHelperProvDataFromStateDataDouble double_;
};

/// The real signer with another chain.
class ChangedSigner
{
public:
    explicit ChangedSigner(std::function<void(CRYPT_PROVIDER_SGNR&)> change)
        : change_(std::move(change)),
          double_([this](CRYPT_PROVIDER_DATA* data, DWORD, BOOL counter, DWORD counterIndex) {
              signer_ = *WTHelperGetProvSignerFromChainDouble::Original(data, 0, counter, counterIndex);
              change_(signer_);
              return &signer_;
          })
    {
    }

private:
    std::function<void(CRYPT_PROVIDER_SGNR&)> change_;
    CRYPT_PROVIDER_SGNR signer_{};
    WTHelperGetProvSignerFromChainDouble double_;
};

} // namespace OrlindexTest

#endif
