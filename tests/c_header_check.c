/* Compiles the public header as C and makes one call through the shared
 * library, so that a C host can use it as it stands. */
#include "lxengine.h"

#include <stdio.h>

int main(void) {
    LX_Lexicon lex;
    LX_Lexicon *list[2];
    char word[LX_MAX_WORD_SZ];
    int32_t cursor = 0;
    int32_t r;
    lex.kind = LEX_DMT;
    if (LX_DMTLex_Create(&lex, 4, LX_LANG_NONE) != 0) return 1;
    if (LX_Lexicon_AddWord(&lex, "hello", LX_ACT_IGNORE, NULL) != 0) return 1;
    list[0] = &lex;
    list[1] = NULL;
    r = LX_CheckText("hello wrld", list, LX_OPT_CHECK_SPELLING, &cursor, word, sizeof word, NULL, 0);
    LX_Lexicon_Close(&lex);
    if (r != LX_RES_MISSPELLED || cursor != 6) {
        printf("unexpected result %d at %d\n", (int)r, (int)cursor);
        return 1;
    }
    printf("C host ok: %s\n", LX_Version);
    return 0;
}
