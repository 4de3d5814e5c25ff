// nuspell_list: list and pipe modes for Nuspell, whose own command line has
// neither. Text is UTF-8. It is cut into words the way the nuspell command
// does it: ICU's word break iterator over each line, keeping the segments
// whose rule status is a number, letter, kana or ideograph word.
//
//   nuspell_list DICT.aff [FILE]      print each misspelled word, one a line
//   nuspell_list -a DICT.aff [FILE]   ispell pipe protocol (see below)
//
// Pipe mode answers the way ispell -a does: a version banner, then for each
// input line one response per word ("*" correct, "& WORD COUNT OFFSET: s1,
// s2" with suggestions, "# WORD OFFSET" without) and an empty line. A line
// starting with '^' is checked as text after the '^'; other command lines
// ('*', '@', '#', '!', '%', '+', '-', '~', '&', '$') are read and ignored,
// which is all a benchmark that prefixes every line with '^' needs. Offsets
// count characters from the start of the line, the '^' included, as ispell
// counts them.

#include <nuspell/dictionary.hxx>

#include <unicode/brkiter.h>
#include <unicode/utext.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

bool is_word_status(int32_t s)
{
	return (UBRK_WORD_NUMBER <= s && s < UBRK_WORD_NUMBER_LIMIT) ||
	       (UBRK_WORD_LETTER <= s && s < UBRK_WORD_LETTER_LIMIT) ||
	       (UBRK_WORD_KANA <= s && s < UBRK_WORD_KANA_LIMIT) ||
	       (UBRK_WORD_IDEO <= s && s < UBRK_WORD_IDEO_LIMIT);
}

// Number of code points in the UTF-8 bytes s[0, n).
size_t count_chars(std::string_view s, size_t n)
{
	size_t c = 0;
	for (size_t i = 0; i < n && i < s.size(); ++i)
		c += (static_cast<unsigned char>(s[i]) & 0xC0) != 0x80;
	return c;
}

class Segmenter {
      public:
	Segmenter()
	{
		UErrorCode err = U_ZERO_ERROR;
		iter_.reset(
		    icu::BreakIterator::createWordInstance(icu::Locale(), err));
		text_ = utext_openUTF8(nullptr, "", 0, &err);
		if (U_FAILURE(err) || !iter_)
			throw std::runtime_error("cannot open ICU word iterator");
	}
	~Segmenter() { utext_close(text_); }
	Segmenter(const Segmenter&) = delete;
	Segmenter& operator=(const Segmenter&) = delete;

	// Calls fn(byte_offset, word) for every word of line.
	template <class Fn> void words(std::string_view line, Fn&& fn)
	{
		UErrorCode err = U_ZERO_ERROR;
		text_ = utext_openUTF8(text_, line.data(),
		                       static_cast<int64_t>(line.size()), &err);
		iter_->setText(text_, err);
		if (U_FAILURE(err))
			return;
		int32_t prev = iter_->first();
		for (int32_t i = iter_->next(); i != icu::BreakIterator::DONE;
		     prev = i, i = iter_->next()) {
			if (is_word_status(iter_->getRuleStatus()))
				fn(static_cast<size_t>(prev),
				   line.substr(prev, i - prev));
		}
	}

      private:
	std::unique_ptr<icu::BreakIterator> iter_;
	UText* text_ = nullptr;
};

void list_mode(const nuspell::Dictionary& dic, std::istream& in)
{
	Segmenter seg;
	std::string line, out;
	out.reserve(1 << 16);
	while (std::getline(in, line)) {
		seg.words(line, [&](size_t, std::string_view w) {
			if (!dic.spell(w)) {
				out.append(w);
				out.push_back('\n');
			}
		});
		if (out.size() > (1 << 15)) {
			std::fwrite(out.data(), 1, out.size(), stdout);
			out.clear();
		}
	}
	std::fwrite(out.data(), 1, out.size(), stdout);
}

void pipe_mode(const nuspell::Dictionary& dic, std::istream& in)
{
	Segmenter seg;
	std::vector<std::string> sugs;
	std::string line, out;
	std::cout << "@(#) International Ispell Version 3.2.06 (but really "
	             "Nuspell adapter)\n"
	          << std::flush;
	while (std::getline(in, line)) {
		if (!line.empty() && line.back() == '\r')
			line.pop_back();
		size_t skip = 0;
		if (!line.empty()) {
			char c = line[0];
			if (c == '^')
				skip = 1;
			else if (std::strchr("*@#!%+-~&$", c))
				continue; // commands: nothing to answer
		}
		std::string_view text = std::string_view(line).substr(skip);
		out.clear();
		seg.words(text, [&](size_t at, std::string_view w) {
			if (dic.spell(w)) {
				out += "*\n";
				return;
			}
			auto off = std::to_string(count_chars(text, at) + skip);
			dic.suggest(w, sugs);
			if (sugs.empty()) {
				out.append("# ").append(w).append(" ");
				out.append(off).append("\n");
				return;
			}
			out.append("& ").append(w).append(" ");
			out.append(std::to_string(sugs.size())).append(" ");
			out.append(off).append(":");
			for (size_t k = 0; k < sugs.size(); ++k)
				out.append(k ? ", " : " ").append(sugs[k]);
			out.append("\n");
		});
		out += "\n";
		std::cout << out << std::flush;
	}
}

} // namespace

int main(int argc, char** argv)
{
	std::ios::sync_with_stdio(false);
	bool pipe = argc > 1 && std::strcmp(argv[1], "-a") == 0;
	int first = pipe ? 2 : 1;
	if (argc - first < 1 || argc - first > 2) {
		std::cerr << "usage: nuspell_list [-a] DICT.aff [FILE]\n";
		return 2;
	}
	nuspell::Dictionary dic;
	try {
		dic.load_aff_dic(argv[first]);
	}
	catch (const std::exception& e) {
		std::cerr << "nuspell_list: " << argv[first] << ": " << e.what()
		          << '\n';
		return 2;
	}
	std::ifstream file;
	std::istream* in = &std::cin;
	if (argc - first == 2) {
		file.open(argv[first + 1], std::ios::binary);
		if (!file) {
			std::cerr << "nuspell_list: cannot read " << argv[first + 1]
			          << '\n';
			return 2;
		}
		in = &file;
	}
	if (pipe)
		pipe_mode(dic, *in);
	else
		list_mode(dic, *in);
	return 0;
}
