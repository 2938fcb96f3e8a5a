#include "ReferenceSignatures.h"

#include <array>
#include <cstdint>
#include <stdexcept>
#include <vector>

#include <boost/multiprecision/cpp_int.hpp>

#include "identity/Base64Url.h"

namespace Kestrany::Agent::OpenId {

namespace {

using boost::multiprecision::cpp_int;
using Type = PublicKey::Type;

// --- Numbers --------------------------------------------------------------------------------------------------------

cpp_int NumberOf(std::string_view bytes)
{
    cpp_int number = 0;
    for (const char byte : bytes)
        number = number << 8 | static_cast<unsigned char>(byte);
    return number;
}

std::string BytesOf(cpp_int number, std::size_t size)
{
    std::string bytes(size, '\0');
    for (std::size_t index = size; index > 0; --index, number >>= 8)
        bytes[index - 1] = static_cast<char>(static_cast<unsigned int>(number & 0xFF));
    return bytes;
}

cpp_int Mod(const cpp_int& number, const cpp_int& modulus)
{
    const cpp_int rest = number % modulus;
    return rest < 0 ? cpp_int(rest + modulus) : rest;
}

/// The whole part of the `root`-th root of a number below 2^20, times 2^bits.
cpp_int ShiftedRoot(unsigned int number, unsigned int root, unsigned int bits)
{
    const cpp_int target = cpp_int(number) << (bits * root);
    cpp_int low = 0;
    cpp_int high = cpp_int(1) << (bits + 20);
    while (high - low > 1)
    {
        const cpp_int middle = (low + high) / 2;
        (boost::multiprecision::pow(middle, root) <= target ? low : high) = middle;
    }
    return low;
}

// --- SHA-2 (FIPS 180-4) ---------------------------------------------------------------------------------------------

std::vector<unsigned int> Primes(std::size_t count)
{
    std::vector<unsigned int> primes;
    for (unsigned int candidate = 2; primes.size() < count; ++candidate)
    {
        bool isPrime = true;
        for (const unsigned int prime : primes)
            isPrime = isPrime && candidate % prime != 0;
        if (isPrime)
            primes.push_back(candidate);
    }
    return primes;
}

/// The fractional bits of a root of a prime: where the constants of SHA-2 come from.
template <class Word>
Word FractionOfRoot(unsigned int prime, unsigned int root)
{
    constexpr unsigned int bits = sizeof(Word) * 8;
    return static_cast<Word>(ShiftedRoot(prime, root, bits) & ((cpp_int(1) << bits) - 1));
}

template <class Word>
Word RotateRight(Word word, unsigned int bits)
{
    return static_cast<Word>(word >> bits | word << (sizeof(Word) * 8 - bits));
}

/// The rotations that differ between the two word sizes: of the round, and of the message schedule.
template <class Word>
constexpr std::array<unsigned int, 12> Rotations = {};
template <>
constexpr std::array<unsigned int, 12> Rotations<std::uint32_t> = {2, 13, 22, 6, 11, 25, 7, 18, 3, 17, 19, 10};
template <>
constexpr std::array<unsigned int, 12> Rotations<std::uint64_t> = {28, 34, 39, 14, 18, 41, 1, 8, 7, 19, 61, 6};

template <class Word>
class Sha2
{
public:
    static constexpr std::size_t Rounds = sizeof(Word) == 4 ? 64 : 80;
    static constexpr std::size_t BlockSize = sizeof(Word) * 16;

    explicit Sha2(std::array<Word, 8> state) : state_(state)
    {
        static const std::vector<unsigned int> primes = Primes(Rounds);
        static const std::array<Word, Rounds> constants = [] {
            std::array<Word, Rounds> made{};
            for (std::size_t index = 0; index < Rounds; ++index)
                made[index] = FractionOfRoot<Word>(primes[index], 3);
            return made;
        }();
        constants_ = constants.data();
    }

    std::string Digest(std::string_view bytes, std::size_t size)
    {
        std::string padded(bytes);
        padded += '\x80';
        while (padded.size() % BlockSize != BlockSize - 2 * sizeof(Word))
            padded += '\0';
        padded += BytesOf(cpp_int(bytes.size()) * 8, 2 * sizeof(Word));
        for (std::size_t start = 0; start < padded.size(); start += BlockSize)
            AddBlock(std::string_view(padded).substr(start, BlockSize));
        std::string digest;
        for (const Word word : state_)
            digest += BytesOf(word, sizeof(Word));
        return digest.substr(0, size);
    }

private:
    void AddBlock(std::string_view block)
    {
        const auto& r = Rotations<Word>;
        std::array<Word, Rounds> w{};
        for (std::size_t t = 0; t < Rounds; ++t)
        {
            if (t < 16)
            {
                for (std::size_t byte = 0; byte < sizeof(Word); ++byte)
                    w[t] = static_cast<Word>(w[t] << 8 | static_cast<unsigned char>(block[t * sizeof(Word) + byte]));
                continue;
            }
            const Word s0 = RotateRight(w[t - 15], r[6]) ^ RotateRight(w[t - 15], r[7]) ^ w[t - 15] >> r[8];
            const Word s1 = RotateRight(w[t - 2], r[9]) ^ RotateRight(w[t - 2], r[10]) ^ w[t - 2] >> r[11];
            w[t] = w[t - 16] + s0 + w[t - 7] + s1;
        }
        std::array<Word, 8> v = state_;
        for (std::size_t t = 0; t < Rounds; ++t)
        {
            const Word s1 = RotateRight(v[4], r[3]) ^ RotateRight(v[4], r[4]) ^ RotateRight(v[4], r[5]);
            const Word choice = (v[4] & v[5]) ^ (~v[4] & v[6]);
            const Word first = v[7] + s1 + choice + constants_[t] + w[t];
            const Word s0 = RotateRight(v[0], r[0]) ^ RotateRight(v[0], r[1]) ^ RotateRight(v[0], r[2]);
            const Word majority = (v[0] & v[1]) ^ (v[0] & v[2]) ^ (v[1] & v[2]);
            v = {static_cast<Word>(first + s0 + majority), v[0], v[1], v[2],
                 static_cast<Word>(v[3] + first),          v[4], v[5], v[6]};
        }
        for (std::size_t index = 0; index < 8; ++index)
            state_[index] += v[index];
    }

    std::array<Word, 8> state_;
    const Word* constants_;
};

/// The first eight primes for SHA-256 and SHA-512, the next eight for SHA-384.
template <class Word>
std::array<Word, 8> StartOfRoots(std::size_t firstPrime)
{
    const std::vector<unsigned int> primes = Primes(16);
    std::array<Word, 8> state{};
    for (std::size_t index = 0; index < 8; ++index)
        state[index] = FractionOfRoot<Word>(primes[firstPrime + index], 2);
    return state;
}

std::size_t DigestSize(HashAlgorithm hash)
{
    return hash == HashAlgorithm::Sha256 ? 32 : hash == HashAlgorithm::Sha384 ? 48 : 64;
}

std::string Hash(HashAlgorithm hash, std::string_view bytes)
{
    static const auto start256 = StartOfRoots<std::uint32_t>(0);
    static const auto start384 = StartOfRoots<std::uint64_t>(8);
    static const auto start512 = StartOfRoots<std::uint64_t>(0);
    if (hash == HashAlgorithm::Sha256)
        return Sha2<std::uint32_t>(start256).Digest(bytes, 32);
    return Sha2<std::uint64_t>(hash == HashAlgorithm::Sha384 ? start384 : start512).Digest(bytes, DigestSize(hash));
}

// --- RSA (RFC 8017) -------------------------------------------------------------------------------------------------

std::string EncodePkcs1(HashAlgorithm hash, std::string_view text, std::size_t size)
{
    const char id = hash == HashAlgorithm::Sha256 ? 1 : hash == HashAlgorithm::Sha384 ? 2 : 3;
    const auto digestSize = static_cast<char>(DigestSize(hash));
    std::string info("\x30\x00\x30\x0d\x06\x09\x60\x86\x48\x01\x65\x03\x04\x02\x00\x05\x00\x04\x00", 19);
    info[1] = static_cast<char>(17 + digestSize);
    info[14] = id;
    info[18] = digestSize;
    info += Hash(hash, text);
    return std::string("\0\1", 2) + std::string(size - info.size() - 3, '\xFF') + '\0' + info;
}

std::string Mask(HashAlgorithm hash, const std::string& seed, std::size_t size)
{
    std::string mask;
    for (unsigned int counter = 0; mask.size() < size; ++counter)
        mask += Hash(hash, seed + BytesOf(counter, 4));
    return mask.substr(0, size);
}

std::string Xor(std::string left, const std::string& right)
{
    for (std::size_t index = 0; index < left.size(); ++index)
        left[index] = static_cast<char>(left[index] ^ right[index]);
    return left;
}

/// For a modulus of 8 * size bits: the encoded message has one bit less.
std::string EncodePss(HashAlgorithm hash, std::string_view text, const std::string& salt, std::size_t size)
{
    const std::string digest = Hash(hash, std::string(8, '\0') + Hash(hash, text) + salt);
    const std::string block = std::string(size - digest.size() - salt.size() - 2, '\0') + '\1' + salt;
    std::string masked = Xor(block, Mask(hash, digest, block.size()));
    masked[0] = static_cast<char>(masked[0] & 0x7F);
    return masked + digest + '\xBC';
}

bool IsPss(HashAlgorithm hash, std::string_view text, const std::string& encoded)
{
    const std::size_t hashSize = DigestSize(hash);
    const std::size_t blockSize = encoded.size() - hashSize - 1;
    std::string block = Xor(encoded.substr(0, blockSize), Mask(hash, encoded.substr(blockSize, hashSize), blockSize));
    return EncodePss(hash, text, block.substr(blockSize - hashSize), encoded.size()) == encoded;
}

bool VerifyRsa(const PublicKey& key, SignatureScheme scheme, HashAlgorithm hash, std::string_view text,
               std::string_view signature)
{
    const cpp_int modulus = NumberOf(key.modulus);
    const cpp_int number = NumberOf(signature);
    if (signature.size() != key.modulus.size() || number >= modulus)
        return false;
    const std::string encoded =
        BytesOf(boost::multiprecision::powm(number, NumberOf(key.exponent), modulus), key.modulus.size());
    return scheme == SignatureScheme::RsaPss ? IsPss(hash, text, encoded)
                                             : encoded == EncodePkcs1(hash, text, encoded.size());
}

// --- ECDSA (FIPS 186-4) ---------------------------------------------------------------------------------------------

struct Curve
{
    cpp_int p;
    cpp_int b;
    cpp_int n;
    cpp_int gx;
    cpp_int gy;
    std::size_t size;
};

const Curve& CurveOf(Type type)
{
    static const Curve p256 = {cpp_int("0xFFFFFFFF00000001000000000000000000000000FFFFFFFFFFFFFFFFFFFFFFFF"),
                               cpp_int("0x5AC635D8AA3A93E7B3EBBD55769886BC651D06B0CC53B0F63BCE3C3E27D2604B"),
                               cpp_int("0xFFFFFFFF00000000FFFFFFFFFFFFFFFFBCE6FAADA7179E84F3B9CAC2FC632551"),
                               cpp_int("0x6B17D1F2E12C4247F8BCE6E563A440F277037D812DEB33A0F4A13945D898C296"),
                               cpp_int("0x4FE342E2FE1A7F9B8EE7EB4A7C0F9E162BCE33576B315ECECBB6406837BF51F5"),
                               32};
    static const Curve p384 = {
        cpp_int("0xFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFEFFFFFFFF0000000000000000FFFFFFFF"),
        cpp_int("0xB3312FA7E23EE7E4988E056BE3F82D19181D9C6EFE8141120314088F5013875AC656398D8A2ED19D2A85C8EDD3EC2AEF"),
        cpp_int("0xFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFC7634D81F4372DDF581A0DB248B0A77AECEC196ACCC52973"),
        cpp_int("0xAA87CA22BE8B05378EB1C71EF320AD746E1D3B628BA79B9859F741E082542A385502F25DBF55296C3A545E3872760AB7"),
        cpp_int("0x3617DE4A96262C6F5D9E98BF9292DC29F8F41DBD289A147CE9DA3113B5F0B8C00A60B1CE1D7E819D7A431D7C90EA0E5F"),
        48};
    return type == Type::P256 ? p256 : p384;
}

/// A point in projective coordinates: x / z^2 and y / z^3. At infinity if z is 0.
struct Point
{
    cpp_int x;
    cpp_int y;
    cpp_int z;
};

Point Double(const Point& a, const cpp_int& p)
{
    if (a.z == 0 || a.y == 0)
        return {1, 1, 0};
    const cpp_int yy = a.y * a.y % p;
    const cpp_int s = 4 * a.x * yy % p;
    const cpp_int zz = a.z * a.z % p;
    const cpp_int m = Mod(3 * (a.x - zz) * (a.x + zz), p); // Both curves have a = -3.
    const cpp_int x = Mod(m * m - 2 * s, p);
    return {x, Mod(m * (s - x) - 8 * yy * yy, p), 2 * a.y * a.z % p};
}

Point Add(const Point& a, const Point& b, const cpp_int& p)
{
    if (a.z == 0)
        return b;
    if (b.z == 0)
        return a;
    const cpp_int aa = a.z * a.z % p;
    const cpp_int bb = b.z * b.z % p;
    const cpp_int u1 = a.x * bb % p;
    const cpp_int u2 = b.x * aa % p;
    const cpp_int s1 = a.y * bb * b.z % p;
    const cpp_int s2 = b.y * aa * a.z % p;
    if (u1 == u2)
        return s1 == s2 ? Double(a, p) : Point{1, 1, 0};
    const cpp_int h = Mod(u2 - u1, p);
    const cpp_int r = Mod(s2 - s1, p);
    const cpp_int hh = h * h % p;
    const cpp_int v = u1 * hh % p;
    const cpp_int x = Mod(r * r - hh * h - 2 * v, p);
    return {x, Mod(r * (v - x) - s1 * hh * h, p), h * a.z * b.z % p};
}

Point Multiply(const cpp_int& factor, const Point& point, const cpp_int& p)
{
    Point sum{1, 1, 0};
    for (unsigned int bit = factor == 0 ? 0 : static_cast<unsigned int>(msb(factor)) + 1; bit > 0; --bit)
    {
        sum = Double(sum, p);
        if (bit_test(factor, bit - 1))
            sum = Add(sum, point, p);
    }
    return sum;
}

cpp_int Inverse(const cpp_int& number, const cpp_int& prime)
{
    return boost::multiprecision::powm(number, prime - 2, prime);
}

cpp_int XOf(const Point& point, const cpp_int& p)
{
    const cpp_int inverse = Inverse(point.z, p);
    return point.x * inverse % p * inverse % p;
}

cpp_int HashNumber(HashAlgorithm hash, std::string_view text, const Curve& curve)
{
    return NumberOf(std::string_view(Hash(hash, text)).substr(0, curve.size));
}

bool VerifyEcdsa(const PublicKey& key, HashAlgorithm hash, std::string_view text, std::string_view signature)
{
    const Curve& curve = CurveOf(key.type);
    const cpp_int x = NumberOf(key.x);
    const cpp_int y = NumberOf(key.y);
    if (signature.size() != 2 * curve.size || x >= curve.p || y >= curve.p ||
        Mod(y * y - x * x * x + 3 * x - curve.b, curve.p) != 0)
        return false;
    const cpp_int r = NumberOf(signature.substr(0, curve.size));
    const cpp_int s = NumberOf(signature.substr(curve.size));
    if (r == 0 || r >= curve.n || s == 0 || s >= curve.n)
        return false;
    const cpp_int w = Inverse(s, curve.n);
    const cpp_int u1 = HashNumber(hash, text, curve) * w % curve.n;
    const cpp_int u2 = r * w % curve.n;
    const Point sum = Add(Multiply(u1, {curve.gx, curve.gy, 1}, curve.p), Multiply(u2, {x, y, 1}, curve.p), curve.p);
    return sum.z != 0 && XOf(sum, curve.p) % curve.n == r;
}

std::string SignEcdsa(const TestKey& key, HashAlgorithm hash, std::string_view text)
{
    const Curve& curve = CurveOf(key.key.type);
    const cpp_int k = 1 + NumberOf(Hash(HashAlgorithm::Sha512, text)) % (curve.n - 1);
    const cpp_int r = XOf(Multiply(k, {curve.gx, curve.gy, 1}, curve.p), curve.p) % curve.n;
    const cpp_int s = Inverse(k, curve.n) * (HashNumber(hash, text, curve) + r * NumberOf(key.privateNumber)) % curve.n;
    return BytesOf(r, curve.size) + BytesOf(s, curve.size);
}

} // namespace

std::string ReferenceSignatures::Digest(HashAlgorithm algorithm, std::string_view bytes)
{
    return Hash(algorithm, bytes);
}

bool ReferenceSignatures::Verify(const PublicKey& key, SignatureScheme scheme, HashAlgorithm hash,
                                 std::string_view text, std::string_view signature)
{
    if ((scheme == SignatureScheme::Ecdsa) != (key.type != Type::Rsa))
        throw std::logic_error("a key of another type than the scheme");
    return scheme == SignatureScheme::Ecdsa ? VerifyEcdsa(key, hash, text, signature)
                                            : VerifyRsa(key, scheme, hash, text, signature);
}

std::string SignForTest(const TestKey& key, SignatureScheme scheme, HashAlgorithm hash, std::string_view text)
{
    if (scheme == SignatureScheme::Ecdsa)
        return SignEcdsa(key, hash, text);
    const std::size_t size = key.key.modulus.size();
    const std::string salt = Hash(hash, std::string(text) + "salt");
    const std::string encoded =
        scheme == SignatureScheme::RsaPss ? EncodePss(hash, text, salt, size) : EncodePkcs1(hash, text, size);
    return BytesOf(
        boost::multiprecision::powm(NumberOf(encoded), NumberOf(key.privateNumber), NumberOf(key.key.modulus)), size);
}

} // namespace Kestrany::Agent::OpenId
