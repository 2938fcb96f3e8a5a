// Version records whose lengths lead beyond their end.

#include <cstring>
#include <vector>

#include "DoctorTest.h"
#include "doctor/VersionRecord.h"
#include "library/GuardedBuffer.h"

#include <windows.h>

namespace OrlindexTest {

using Orlindex::Doctor::ParseVersionRecord;
using Orlindex::Doctor::VersionRecord;

class DoctorVersionRecord : public DoctorTest
{
protected:
    /// Of the library, of just the length that it says it has.
    std::string LibraryRecord() const
    {
        const std::wstring file = (site.HostFolder() / "Orlindex.dll").native();
        DWORD ignored = 0;
        std::string record(GetFileVersionInfoSizeW(file.c_str(), &ignored), '\0');
        EXPECT_TRUE(GetFileVersionInfoW(file.c_str(), 0, static_cast<DWORD>(record.size()), record.data()));
        WORD length = 0;
        std::memcpy(&length, record.data(), sizeof length);
        EXPECT_LE(length, record.size());
        record.resize(length);
        return record;
    }

    /// Sets the length of a text's value, which stands in front of its key.
    static void SetValueLength(std::string& record, const std::wstring& key, WORD length)
    {
        const std::string bytes(reinterpret_cast<const char*>(key.c_str()), (key.size() + 1) * sizeof(wchar_t));
        const std::size_t at = record.find(bytes);
        ASSERT_NE(at, std::string::npos);
        std::memcpy(&record.at(at - 4), &length, sizeof length);
    }

    /// Parsed where the first byte read beyond the record ends the process.
    static std::optional<VersionRecord> Parse(const std::string& record)
    {
        const GuardedBuffer buffer(record.size());
        std::memcpy(buffer.Data(), record.data(), record.size());
        return ParseVersionRecord(buffer.Data(), record.size());
    }
};

TEST_F(DoctorVersionRecord, ASoundOneIsRead)
{
    const auto record = Parse(LibraryRecord());
    ASSERT_TRUE(record);
    EXPECT_EQ(record->fileVersion, "1.11.13.3");
    EXPECT_THAT(record->description, testing::StartsWith("Client library for single sign-on"));
}

TEST_F(DoctorVersionRecord, ATextThatClaimsToGoOnBeyondTheEndEndsThere)
{
    const auto sound = Parse(LibraryRecord());
    ASSERT_TRUE(sound);
    for (const WORD length : {WORD{0x7FFF}, WORD{0xFFFF}})
    {
        std::string bytes = LibraryRecord();
        SetValueLength(bytes, L"FileDescription", length);
        const auto record = Parse(bytes);
        ASSERT_TRUE(record);
        EXPECT_EQ(record->description, sound->description);
    }
}

TEST_F(DoctorVersionRecord, NumbersThatTheRecordHasNoRoomForAreNone)
{
    // The record's own header, and the first word of its numbers, which claim their whole length.
    std::string bytes = LibraryRecord().substr(0, 44);
    const auto length = static_cast<WORD>(bytes.size());
    std::memcpy(bytes.data(), &length, sizeof length);
    const auto record = Parse(bytes);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->fileVersion, "");
}

TEST_F(DoctorVersionRecord, ARecordThatClaimsMoreBytesThanThereAreIsNone)
{
    const std::string bytes = LibraryRecord();
    EXPECT_FALSE(Parse(bytes.substr(0, bytes.size() - 2)));
    EXPECT_FALSE(Parse(bytes.substr(0, 1)));
    EXPECT_FALSE(Parse(""));
}

} // namespace OrlindexTest
