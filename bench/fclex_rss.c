/* fclex_rss - the smallest host of a compressed lexicon, for its peak
 * resident memory: links the shared library, opens the lexicon with a
 * budget, checks a text read in blocks that end at line ends (so that the
 * text itself takes no memory worth counting), and prints the process's
 * high-water mark before the open and after the check.
 *
 * Usage: fclex_rss LEXICON TEXT BUDGET
 * Prints: "<peak> MB (<before the open> MB before the open, <n> words checked)" */
#include "lxengine.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* VmHWM of /proc/self/status, in KiB, or -1. */
static long peak_kib(void) {
    char line[256];
    long kib = -1;
    FILE *f = fopen("/proc/self/status", "r");
    if (f == NULL) return -1;
    while (fgets(line, sizeof line, f) != NULL)
        if (strncmp(line, "VmHWM:", 6) == 0) kib = atol(line + 6);
    fclose(f);
    return kib;
}

static long check_block(const char *text, LX_Lexicon *const *list) {
    const uint32_t options = LX_OPT_CHECK_SPELLING | LX_OPT_CASE_SENSITIVE | LX_OPT_ACCENTED_CAPITALS;
    char word[LX_MAX_WORD_SZ], repl[LX_MAX_WORD_SZ];
    long words = 0;
    int32_t cursor = 0;
    for (int32_t c = 0; c >= 0; c = LX_NextTextWord(text, c, options)) ++words;
    for (;;) {
        if (LX_CheckText(text, list, options, &cursor, word, sizeof word, repl, sizeof repl) == LX_RES_NONE_LEFT)
            break;
        cursor = LX_NextTextWord(text, cursor, options);
        if (cursor < 0) break;
    }
    return words;
}

int main(int argc, char **argv) {
    static char block[16384];
    LX_Lexicon lex;
    LX_Lexicon *list[2];
    FILE *text;
    size_t held = 0;
    long words = 0, before;
    if (argc != 4) {
        fprintf(stderr, "usage: fclex_rss LEXICON TEXT BUDGET\n");
        return 2;
    }
    before = peak_kib();
    memset(&lex, 0, sizeof lex);
    lex.kind = LEX_FC;
    if (LX_FCLex_Open(&lex, argv[1], atoi(argv[3])) != 0) {
        fprintf(stderr, "fclex_rss: %s\n", LX_Diag_GetLastMsg());
        return 1;
    }
    list[0] = &lex;
    list[1] = NULL;
    text = fopen(argv[2], "rb");
    if (text == NULL) {
        fprintf(stderr, "fclex_rss: can't read %s\n", argv[2]);
        return 1;
    }
    for (;;) {
        const size_t got = fread(block + held, 1, sizeof block - 1 - held, text);
        char *cut;
        held += got;
        if (held == 0) break;
        block[held] = '\0';
        /* Check up to the last line end; at the end of the file, all. A
         * block without a line end is checked whole. */
        cut = got > 0 ? strrchr(block, '\n') : NULL;
        if (cut == NULL) cut = block + held - 1;
        {
            const char keep = cut[1];
            cut[1] = '\0';
            words += check_block(block, list);
            cut[1] = keep;
        }
        held -= (size_t)(cut + 1 - block);
        memmove(block, cut + 1, held);
    }
    fclose(text);
    LX_Lexicon_Close(&lex);
    printf("%.2f MB (%.2f MB before the open, %ld words checked)\n", peak_kib() / 1024.0, before / 1024.0, words);
    return 0;
}
