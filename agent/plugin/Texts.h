#ifndef AGENT_PLUGIN_TEXTS_H
#define AGENT_PLUGIN_TEXTS_H

#include <initializer_list>
#include <string>

#include "identity/ResultCodes.h"

namespace Kestrany::Agent {

// Texts of the contract's operations. Within the plugin all texts are UTF-8.

// --- Arguments ------------------------------------------------------------------------------------------------------

/// Takes a UTF-16 text. IdFailed if it is null or empty, IdInvalidText if it is not well formed.
IdErrorCode TakeWide(const wchar_t* text, std::string& taken);

/// Takes an address likewise. IdInvalidText also if it holds a replacement character (U+FFFD), which the library puts
/// in place of ill-formed parts of a host's UTF-8.
IdErrorCode TakeAddress(const wchar_t* text, std::string& taken);

/// Takes a UTF-8 text; a null one is empty. IdInvalidText if it is not well formed.
IdErrorCode TakeNarrow(const char* text, std::string& taken);
/// Takes a UTF-8 text from a buffer of `capacity` bytes; what lies behind the buffer is not read.
IdErrorCode TakeNarrow(const char* text, int capacity, std::string& taken);

// --- Results --------------------------------------------------------------------------------------------------------

/// Writes a text as UTF-16 with its terminating zero, or nothing if it does not fit. `capacity` in UTF-16 units.
IdErrorCode CopyWide(const std::string& text, wchar_t* buffer, int capacity);

/// CopyWide. Returns the length without the terminating zero; 0, with `buffer` untouched, if the text does not fit.
int CopyWideLength(const std::string& text, wchar_t* buffer, int capacity);
/// Copies UTF-8. Returns the length without the terminating zero; 0, with `buffer` untouched, if the text does not fit.
int CopyNarrowLength(const std::string& text, char* buffer, int capacity);

/// One text of a record that the caller owns. A null buffer or a capacity of 0 means that it is not wanted.
struct RecordText
{
    const std::string& text;
    char* buffer;
    int capacity;
};

/// Writes all texts that are wanted, or none of them if one does not fit.
IdErrorCode CopyRecord(std::initializer_list<RecordText> texts);

} // namespace Kestrany::Agent

#endif
