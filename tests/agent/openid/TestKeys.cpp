#include "TestKeys.h"

#include "identity/Base64Url.h"

namespace Kestrany::Agent::OpenId {

namespace {

using Type = PublicKey::Type;

TestKey RsaKey(const char* modulus, const char* privateNumber)
{
    TestKey key;
    key.key.type = Type::Rsa;
    key.key.modulus = *FromBase64Url(modulus);
    key.key.exponent = *FromBase64Url("AQAB");
    key.privateNumber = *FromBase64Url(privateNumber);
    return key;
}

TestKey CurveKey(Type type, const char* x, const char* y, const char* privateNumber)
{
    TestKey key;
    key.key.type = type;
    key.key.x = *FromBase64Url(x);
    key.key.y = *FromBase64Url(y);
    key.privateNumber = *FromBase64Url(privateNumber);
    return key;
}

} // namespace

const TestKey& RsaTestKey()
{
    static const TestKey key =
        RsaKey("ofgWCuLjybRlzo0tZWJjNiuSfb4p4fAkd_wWJcyQoTbji9k0l8W26mPddxHmfHQp-Vaw-4qPCJrcS2mJPMEzP1Pt0Bm4d4QlL-"
               "yRT-SFd2lZS-pCgNMsD1W_YpRPEwOWvG6b32690r2jZ47soMZo9wGzjb_7OMg0LOL-bSf63kpaSHSXndS5z5rexMdbBYUsLA9e-"
               "KXBdQOS-UTo7WTBEMa2R2CapHg665xsmtdVMTBQY4uDZlxvb3qCo5ZwKh9kG4LT6_I5IhlJH7aGhyxXFvUK-DWNmoudF8NAco9_"
               "h9iaGNj8q2ethFkMLs91kzk2PAcDTW9gb54h4FRWyuXpoQ",
               "Eq5xpGnNCivDflJsRQBXHx1hdR1k6Ulwe2JZD50LpXyWPEAeP88vLNO97IjlA7_GQ5sLKMgvfTeXZx9SE-7YwVol2NXOoAJe46sui"
               "395IW_GO-pWJ1O0BkTGoVEn2bKVRUCgu-GjBVaYLU6f3l9kJfFNS3E0QbVdxzubSu3Mkqzjkn439X0M_V51gfpRLI9JYanrC4D4qA"
               "dGcopV_0ZHHzQlBjudU2QvXt4ehNYTCBr6XCLQUShb1juUO1ZdiYoFaFQT5Tw8bGUl_x_jTj3ccPDVZFD9pIuhLhBOneufuBiB4cS"
               "98l2SR_RQyGWSeWjnczT0QU91p1DhOVRuOopznQ");
    return key;
}

const TestKey& OtherRsaTestKey()
{
    static const TestKey key =
        RsaKey("n4EPtAOCc9AlkeQHPzHStgAbgs7bTZLwUBZdR8_KuKPEHLd4rHVTeT-O-XV2jRojdNhxJWTDvNd7nqQ0VEiZQHz_AJmSCpMaJMRBSF"
               "KrKb2wqVwGU_NsYOYL-QtiWN2lbzcEe6XC0dApr5ydQLrHqkHHig3RBordaZ6Aj-oBHqFEHYpPe7Tpe-OfVfHd1E6cS6M1FZcD1NNL"
               "YD5lFHpPI9bTwJlsde3uhGqC0ZCuEHg8lhzwOHrtIQbS0FVbb9k3-tVTU4fg_3L_vniUFAKwuCLqKnS2BYwdq_mzSnbLY7h_qixoR7"
               "jig3__kRhuaxwUkRz5iaiQkqgc5gHdrNP5zw",
               "");
    return key;
}

const TestKey& P256TestKey()
{
    static const TestKey key =
        CurveKey(Type::P256, "f83OJ3D2xF1Bg8vub9tLe1gHMzV76e8Tus9uPHvRVEU",
                 "x_FEzRu9m36HLN_tue659LNpXW6pCyStikYjKIWI5a0", "jpsQnnGQmL-YBIffH1136cspYG6-0iY7X1fCE9-E9LI");
    return key;
}

const TestKey& OtherP256TestKey()
{
    static const TestKey key =
        CurveKey(Type::P256, "MKBCTNIcKUSDii11ySs3526iDZ8AiTo7Tu6KPAqv7D4",
                 "4Etl6SRW2YiLUrN5vfvVHuhp7x8PxltmWWlbbM4IFyM", "870MB6gfuTJ4HtUnUvYMyJpr5eUZNP4Bk43bVdj3eAE");
    return key;
}

const TestKey& P384TestKey()
{
    static const TestKey key = CurveKey(Type::P384, "lpoxeSvHOLLb-wY-Tx-gmm59lDOBilkV_7VAXfbeZ7xjul9B7auwVXgGQItMelUu",
                                        "REaG-PdCUbSP1QpbCcI_yYdWwfmHojUGpi72EoqYzfaC-ib774X7mOuBNgUAya1h",
                                        "1fVZNLMN2olhvLSyZhDGvVKmfaCtP1QWAoWXFSoeDeq66PUwCkoK-5dnvTMI6UhW");
    return key;
}

const TestKey& TestKeyOfType(PublicKey::Type type)
{
    return type == Type::Rsa ? RsaTestKey() : type == Type::P256 ? P256TestKey() : P384TestKey();
}

} // namespace Kestrany::Agent::OpenId
