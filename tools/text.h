// text.h - the tool's side of the text: conversion between the user's
// encoding and the engine's ISO 8859-1, positions counted in the
// characters of the original text, and reading a stream in blocks that end
// at a line end, so that a file of any size is checked in bounded memory.
#ifndef LXSPELL_TEXT_H
#define LXSPELL_TEXT_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace lxspell {

enum class Encoding { Utf8, Latin1 };

// Stands in the engine's text for one character that ISO 8859-1 lacks. It
// has no class for the engine's scanner, so it ends a word; a word that
// touches it is passed over (see touches_foreign).
inline constexpr char kForeign = '\x1A';

// Converts UTF-8 to ISO 8859-1, one byte for each character, appending to
// out; a character outside ISO 8859-1 becomes kForeign. Returns
// std::string_view::npos, or the offset in `in` of the first byte that
// isn't valid UTF-8 (out then holds the text before it).
size_t utf8_to_latin1(std::string_view in, std::string &out);

// Appends the UTF-8 form of an ISO 8859-1 text to out.
void latin1_to_utf8(std::string_view in, std::string &out);
std::string to_utf8(std::string_view latin1);

// The engine's form of a word the user typed (a command-line argument, a
// pipe command): false if it isn't valid in `enc` or holds a character
// outside ISO 8859-1.
bool word_to_latin1(std::string_view in, Encoding enc, std::string &out);

// A text in the user's encoding from the engine's form.
std::string from_latin1(std::string_view latin1, Encoding enc);

// True if the word at [start, start + len) of text holds or touches a
// stand-in for a character outside ISO 8859-1.
bool touches_foreign(std::string_view text, size_t start, size_t len);

// ISO 8859-1 lower case.
std::string latin1_lower(std::string_view in);

// Bytes of the UTF-8 sequence that begins with `lead` (1 for a byte that
// can't begin one).
inline size_t utf8_length(unsigned char lead) {
    if (lead < 0xC0) return 1;
    if (lead < 0xE0) return 2;
    if (lead < 0xF0) return 3;
    return 4;
}

// Where a character stands in the original text.
struct Position {
    uint64_t line = 1;   // from 1
    uint64_t column = 1; // from 1, in characters
    uint64_t byte = 0;   // from 0, offset of its first byte in the file
};

// Walks a block of the engine's text beside the original bytes it came
// from, forward only, and says where an offset of the engine's text stands
// in the original. One engine byte is one character of the original.
class PositionTracker {
public:
    // A new block: `engine` and `original` hold the same characters; the
    // block begins at `start`.
    void begin_block(std::string_view engine, std::string_view original, Encoding enc, Position start);
    // The position of engine offset `offset` (within the block, not before
    // the last offset asked for).
    Position at(size_t offset);
    // The position just behind the block: where the next one begins.
    Position end() { return at(engine_.size()); }

private:
    std::string_view engine_, original_;
    Encoding enc_ = Encoding::Utf8;
    size_t engineAt_ = 0, originalAt_ = 0;
    Position pos_;
};

// Reads a stream in blocks of about blockSize bytes (16 KiB) that end at a line end.
// A line longer than maxLine is cut at a blank, or at a character boundary
// if it has none, so memory stays bounded whatever the input.
class BlockReader {
public:
    static constexpr size_t kBlockSize = 16 * 1024;
    explicit BlockReader(FILE *fp, size_t blockSize = kBlockSize, size_t maxLine = 1024 * 1024)
        : fp_(fp), blockSize_(blockSize), maxLine_(maxLine) {}
    // The next block into `block`; false at the end of the stream. A read
    // error sets failed().
    bool next(std::string &block);
    // The same, as a view into the reader's own buffer, valid until the
    // next call: no copy of the block is made.
    bool next(std::string_view &block);
    bool failed() const { return failed_; }

private:
    // Reads until size_ is want or the stream ends; false if nothing is held.
    bool fill(size_t want);
    std::string_view pending() const { return {buf_.get(), size_}; }
    FILE *fp_;
    size_t blockSize_, maxLine_;
    std::unique_ptr<char[]> buf_; // what was read and not yet handed on
    size_t capacity_ = 0, size_ = 0;
    size_t handedOut_ = 0; // the front of the buffer that the last block viewed
    bool eof_ = false, failed_ = false;
};

} // namespace lxspell

#endif
