/* A host that embeds lxengine: a memory lexicon of a few words, one of them
 * with a replacement, and a sentence checked against it, finding by finding.
 *   cc embed.c $(pkg-config --cflags --libs lxengine) -o embed */
#include <lxengine.h>
#include <stdio.h>

int main(void) {
    static const char *const words[] = {"the", "cat", "sat", "on", "mat", NULL};
    const char *text = "The cat sat on the the mat; teh mta.";
    LX_Lexicon lex = {.kind = LEX_DMT};
    LX_Lexicon *lexicons[] = {&lex, NULL};
    uint32_t options = LX_OPT_CHECK_SPELLING | LX_OPT_REPORT_REPEATED;
    char word[LX_MAX_WORD_SZ], repl[LX_MAX_WORD_SZ];
    int32_t cursor = 0, res;

    if (LX_DMTLex_Create(&lex, 8, LX_LANG_NONE) != 0) return 1;
    for (int i = 0; words[i] != NULL; i++) LX_Lexicon_AddWord(&lex, words[i], LX_ACT_IGNORE, NULL);
    LX_Lexicon_AddWord(&lex, "teh", LX_ACT_AUTO_CHANGE, "the");
    while (cursor >= 0 &&
           (res = LX_CheckText(text, lexicons, options, &cursor, word, sizeof word,
                               repl, sizeof repl)) != LX_RES_NONE_LEFT) {
        if (res & LX_RES_AUTO_CHANGE) printf("%d: %s -> %s\n", cursor, word, repl);
        else if (res & LX_RES_REPEATED) printf("%d: %s repeated\n", cursor, word);
        else printf("%d: %s misspelled\n", cursor, word);
        cursor = LX_NextTextWord(text, cursor, options);
    }
    LX_Lexicon_Close(&lex);
    return 0;
}
