// text.cpp - encoding conversion, positions and block reading for lxspell.
#include "text.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace lxspell {

namespace {

// Decodes one UTF-8 sequence at in[i]; returns its length, or 0 if it is
// not valid (cut short, overlong, a surrogate, beyond U+10FFFF).
size_t decode_one(std::string_view in, size_t i, uint32_t &cp) {
    const auto b = [&](size_t k) { return static_cast<unsigned char>(in[i + k]); };
    const unsigned char c = b(0);
    if (c < 0x80) {
        cp = c;
        return 1;
    }
    size_t n;
    uint32_t min;
    if (c >= 0xC2 && c <= 0xDF) {
        n = 2, cp = c & 0x1F, min = 0x80;
    } else if (c >= 0xE0 && c <= 0xEF) {
        n = 3, cp = c & 0x0F, min = 0x800;
    } else if (c >= 0xF0 && c <= 0xF4) {
        n = 4, cp = c & 0x07, min = 0x10000;
    } else {
        return 0;
    }
    if (i + n > in.size()) return 0;
    for (size_t k = 1; k < n; ++k) {
        if ((b(k) & 0xC0) != 0x80) return 0;
        cp = (cp << 6) | (b(k) & 0x3F);
    }
    if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return 0;
    return n;
}

bool is_blank(char c) { return c == ' ' || c == '\t'; }

} // namespace

size_t utf8_to_latin1(std::string_view in, std::string &out) {
    out.reserve(out.size() + in.size());
    size_t i = 0;
    while (i < in.size()) {
        // Runs of ASCII go across unchanged.
        size_t j = i;
        while (j < in.size() && static_cast<unsigned char>(in[j]) < 0x80) ++j;
        out.append(in.data() + i, j - i);
        i = j;
        if (i == in.size()) break;
        uint32_t cp = 0;
        const size_t n = decode_one(in, i, cp);
        if (n == 0) return i;
        out.push_back(cp <= 0xFF ? static_cast<char>(cp) : kForeign);
        i += n;
    }
    return std::string_view::npos;
}

void latin1_to_utf8(std::string_view in, std::string &out) {
    out.reserve(out.size() + in.size());
    for (char ch : in) {
        const auto c = static_cast<unsigned char>(ch);
        if (c < 0x80) {
            out.push_back(ch);
        } else {
            out.push_back(static_cast<char>(0xC0 | (c >> 6)));
            out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        }
    }
}

std::string to_utf8(std::string_view latin1) {
    std::string out;
    latin1_to_utf8(latin1, out);
    return out;
}

bool word_to_latin1(std::string_view in, Encoding enc, std::string &out) {
    out.clear();
    if (enc == Encoding::Latin1) {
        out.assign(in);
        return true;
    }
    if (utf8_to_latin1(in, out) != std::string_view::npos) return false;
    return out.find(kForeign) == std::string::npos;
}

std::string from_latin1(std::string_view latin1, Encoding enc) {
    return enc == Encoding::Utf8 ? to_utf8(latin1) : std::string(latin1);
}

bool touches_foreign(std::string_view text, size_t start, size_t len) {
    const size_t from = start > 0 ? start - 1 : 0;
    const size_t to = std::min(text.size(), start + len + 1);
    return from < to && text.substr(from, to - from).find(kForeign) != std::string_view::npos;
}

std::string latin1_lower(std::string_view in) {
    std::string out(in);
    for (char &ch : out) {
        const auto c = static_cast<unsigned char>(ch);
        if ((c >= 'A' && c <= 'Z') || (c >= 0xC0 && c <= 0xDE && c != 0xD7)) ch = static_cast<char>(c + 0x20);
    }
    return out;
}

void PositionTracker::begin_block(std::string_view engine, std::string_view original, Encoding enc,
                                  Position start) {
    engine_ = engine;
    original_ = original;
    enc_ = enc;
    engineAt_ = originalAt_ = 0;
    pos_ = start;
}

Position PositionTracker::at(size_t offset) {
    offset = std::min(offset, engine_.size());
    while (engineAt_ < offset) {
        const size_t n = enc_ == Encoding::Utf8 && originalAt_ < original_.size()
                             ? utf8_length(static_cast<unsigned char>(original_[originalAt_]))
                             : 1;
        if (engine_[engineAt_] == '\n') {
            ++pos_.line;
            pos_.column = 1;
        } else {
            ++pos_.column;
        }
        ++engineAt_;
        originalAt_ += n;
        pos_.byte += n;
    }
    return pos_;
}

bool BlockReader::fill(size_t want) {
    if (want > capacity_) {
        // Memory that is only written by the reads: a string would clear
        // it first, touching every page of it for a one-line input too.
        std::unique_ptr<char[]> bigger(new char[want]);
        if (size_ > 0) std::memcpy(bigger.get(), buf_.get(), size_);
        buf_ = std::move(bigger);
        capacity_ = want;
    }
    // No more than is wanted: the buffer stays at about one block,
    // whatever the stream.
    while (!eof_ && size_ < want) {
        const size_t ask = want - size_;
        const size_t n = std::fread(buf_.get() + size_, 1, ask, fp_);
        size_ += n;
        if (n < ask) {
            eof_ = true;
            failed_ = std::ferror(fp_) != 0;
        }
    }
    return size_ > 0;
}

bool BlockReader::next(std::string &block) {
    std::string_view view;
    const bool more = next(view);
    block.assign(view);
    return more;
}

bool BlockReader::next(std::string_view &block) {
    // What the last block left behind goes to the front.
    if (handedOut_ > 0) {
        size_ -= handedOut_;
        std::memmove(buf_.get(), buf_.get() + handedOut_, size_);
        handedOut_ = 0;
    }
    block = {};
    if (!fill(blockSize_)) return false;
    size_t cut = std::string_view::npos;
    if (eof_ && size_ <= blockSize_) {
        cut = size_;
    } else {
        // The last line end within the block; failing that, read on to the
        // end of the line, up to the longest line kept whole.
        const size_t lf = pending().rfind('\n', blockSize_ - 1);
        if (lf != std::string_view::npos) {
            cut = lf + 1;
        } else {
            size_t searched = 0;
            for (;;) {
                const size_t next = pending().find('\n', searched);
                if (next != std::string_view::npos && next < maxLine_) {
                    cut = next + 1;
                    break;
                }
                searched = size_;
                // One byte beyond the limit is held too, so that a cut at
                // the limit can see whether a character goes on there.
                if (eof_ || size_ > maxLine_) break;
                fill(std::min(maxLine_ + 1, std::max(size_ + blockSize_, 2 * capacity_)));
            }
            if (cut == std::string_view::npos) {
                const std::string_view held = pending();
                if (eof_ && size_ <= maxLine_) {
                    cut = size_;
                } else {
                    // No line end: cut behind the last blank, or else at a
                    // character boundary. size_ > maxLine_ here.
                    const size_t limit = maxLine_;
                    size_t b = limit;
                    while (b > 0 && !is_blank(held[b - 1])) --b;
                    if (b == 0) {
                        b = limit;
                        while (b > 1 && (static_cast<unsigned char>(held[b]) & 0xC0) == 0x80) --b;
                    }
                    cut = b;
                }
            }
        }
    }
    block = pending().substr(0, cut);
    handedOut_ = cut;
    return true;
}

} // namespace lxspell
