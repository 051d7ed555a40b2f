// Filling "tight" placeholders, pass after pass: an open delimiter, a name
// with no delimiter in it, and the close delimiter. Used by CVarList::Expand
// when every placeholder can be filled by looking its name up.
#pragma once

#include <algorithm>
#include <utility>
#include <vector>

#include "TVarList.h"

namespace Tern {

// A stretch of the text where placeholders may begin: [start, end).
struct CTextStretch {
  Int start;
  Int end;
};

// One pass over `text`: every tight placeholder that begins inside one of the
// stretches of `look` (in order, left to right) and whose name `valueOf`
// knows is replaced by that value, and the text is built anew once.
//
// A placeholder the pass leaves alone can only become fillable when a value
// lands in it or next to it, so the next pass need look only around what this
// one put in: on return `look` holds each inserted value, widened in front by
// the longest placeholder that could reach into it. That keeps an expansion
// of many passes from reading the whole text again on each of them.
//
// `budget` holds the replacements still allowed; they end at -1 when one more
// was due, or when the text grew past its limit. The new text is built in
// `spare`, which then holds the old one: passes take turns with two buffers.
template <typename StrT, typename ValueOf>
Int FillTightPlaceholders(StrT& text, typename StrT::CharType open,
                          typename StrT::CharType close, Int longestName,
                          ValueOf valueOf, std::vector<CTextStretch>& look,
                          CExpansionBudget& budget, StrT& spare) {
  using Ch = typename StrT::CharType;
  const Ch* chars = text.Chars();
  const Int len = text.Length();
  const Int reach = longestName + 1;  // the open delimiter and the name
  StrT& out = spare;
  out.Clear();
  std::vector<CTextStretch> next;
  Int copied = 0, count = 0, grown = len;
  Int i = 0;
  for (const CTextStretch& stretch : look) {
    i = std::max(i, stretch.start);
    const Int stop = std::min(len, stretch.end);
    while (i < stop && budget.replacements >= 0) {
      if (chars[i] != open) {
        ++i;
        continue;
      }
      // A name longer than the longest one known is never filled.
      const Int nameEnd = std::min(len, i + reach + 1);
      Int j = i + 1;
      while (j < nameEnd && chars[j] != open && chars[j] != close) ++j;
      if (j >= nameEnd || chars[j] == open) {
        i = j;  // no delimiter before j: the next placeholder begins there
        continue;
      }
      const StrT* value =
          j > i + 1 ? valueOf(chars + i + 1, j - i - 1) : nullptr;
      if (value) {
        if (budget.replacements <= 0 || grown > budget.maxLength) {
          budget.replacements = -1;  // one more was due: it would not end
          break;
        }
        --budget.replacements;
        grown += value->Length() - (j - i + 1);
        if (count == 0) out.Reserve(len + value->Length());
        out.Append(chars + copied, i - copied);
        const Int valueStart = out.Length();
        out.Append(*value);
        next.push_back({std::max<Int>(0, valueStart - reach), out.Length()});
        copied = j + 1;
        ++count;
      }
      i = j + 1;
    }
  }
  if (count > 0) {
    out.Append(chars + copied, len - copied);
    std::swap(text, out);
  }
  look = std::move(next);
  return count;
}

}  // namespace Tern
