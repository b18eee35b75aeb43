// Decoding of PDF text strings and dates (ISO 32000-1, 7.9.2 and 7.9.4), lenient where real files
// are. Pure functions on bytes. [any-thread]
#pragma once

#include "pdf-library/PDTypes.h"

#include <string>
#include <string_view>

namespace Documents {

// The text of a PDF text string: UTF-16 of either byte order and UTF-8 by their marks, else
// PDFDocEncoding. Language escapes, NULs and control characters but tab, CR and LF are left out.
// Unpaired surrogates are kept; a last odd byte of UTF-16 is ignored; bytes that are not valid
// UTF-8, or stand for nothing in PDFDocEncoding, become U+FFFD.
std::u16string DecodeTextString(std::string_view bytes);

// The same text as a PDF text string: PDFDocEncoding where plain ASCII will do, else big-endian
// UTF-16 with its mark. What DecodeTextString would leave out is written all the same.
std::string EncodeTextString(std::u16string_view text);

// The date of a PDF date string, with the standard's defaults for missing fields. Reading stops at
// the first field that is not made of digits; what was read before counts. Numbers out of their
// field's range are handed out as they are. A date without a zone is UTC. Year 0 when there is not
// even a year of four digits. The ISO 8601 form is read too.
_PDDateRec DecodeDate(std::string_view bytes);

}  // namespace Documents
