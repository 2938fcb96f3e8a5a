#ifndef AGENT_PLUGIN_TEXTOUT_H
#define AGENT_PLUGIN_TEXTOUT_H

#include <initializer_list>
#include <string>

#include "session/ResultCodes.h"

namespace Kestrany::Agent {

/// Writes a UTF-8 text as UTF-16 with its terminating zero; nothing when it does not fit. `capacity` in UTF-16 units.
IdErrorCode CopyWide(const std::string& text, wchar_t* buffer, int capacity);

/// Answers the length without the terminating zero; 0, with `buffer` untouched, when the text does not fit.
int CopyWideLength(const std::string& text, wchar_t* buffer, int capacity);
/// Answers the length without the terminating zero; 0, with `buffer` untouched, when the text does not fit.
int CopyNarrowLength(const std::string& text, char* buffer, int capacity);

/// One text of a record that the caller owns. A null buffer or a capacity of 0 means that it is not wanted.
struct RecordText
{
    const std::string& text;
    char* buffer;
    int capacity;
};

/// Writes all texts that are wanted, or none of them when one does not fit.
IdErrorCode CopyRecord(std::initializer_list<RecordText> texts);

} // namespace Kestrany::Agent

#endif
