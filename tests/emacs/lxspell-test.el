;;; lxspell-test.el --- Emacs's ispell.el and flyspell driving lxspell -*- lexical-binding: t -*-

;; Run by run.sh as
;;   emacs -Q --batch -l lxspell-test.el -- LXSPELL LEXICON DIR
;; LXSPELL is the program, LEXICON its main lexicon, DIR a scratch directory
;; for the personal lexicon. Every test starts a fresh lxspell through
;; ispell.el, as an editor does, and checks the words, their positions and
;; the suggestions that come back, with non-ASCII words on the lines.

(require 'ert)
(require 'ispell)
(require 'flyspell)
(require 'cl-lib)

(defvar lxt-program (expand-file-name (nth 1 command-line-args-left)))
(defvar lxt-lexicon (expand-file-name (nth 2 command-line-args-left)))
(defvar lxt-dir (file-name-as-directory (expand-file-name (nth 3 command-line-args-left))))
(setq command-line-args-left nil)

;; An unknown program gets the settings of the default dictionary entry,
;; which speak ISO 8859-1; this entry makes ispell.el talk UTF-8, and names
;; the lexicon with -d (so ispell.el adds no -d of its own).
(setq ispell-program-name lxt-program
      ispell-local-dictionary-alist
      `((nil "[[:alpha:]]" "[^[:alpha:]]" "[']" nil ("-d" ,lxt-lexicon) nil utf-8))
      ispell-dictionary nil
      ispell-personal-dictionary (expand-file-name "personal.lex" lxt-dir)
      ispell-silently-savep t
      flyspell-issue-message-flag nil
      flyspell-issue-welcome-flag nil)

(defconst lxt-text
  (concat "The café served a jalapeño sandwhich and a souflé.\n"
          "Dvořák wrote a symphnoy; the cafè was closed.\n"
          "Recieve the brûlée and frobnicate it.\n"))

;; Misspelled words of lxt-text in order, each with a suggestion that must
;; be among those offered. "frobnicate" is one of the buffer's own words
;; (see lxt-with-buffer); "Dvořák" holds a letter the engine can't store,
;; so it is passed over.
(defconst lxt-misspelled
  '(("sandwhich" "sandwich") ("souflé" "soufflé") ("symphnoy" "symphony")
    ("cafè" "café") ("Recieve" "Receive") ("brûlée" nil)))

(defun lxt-restart ()
  (ispell-kill-ispell t t)
  (setq ispell-pdict-modified-p nil))

(defmacro lxt-with-buffer (&rest body)
  "Run BODY in a text buffer holding `lxt-text' and a LocalWords line."
  (declare (indent 0))
  `(with-temp-buffer
     (insert lxt-text)
     (insert "\nLocalWords: frobnicate\n")
     (goto-char (point-min))
     (lxt-restart)
     (unwind-protect (progn ,@body) (lxt-restart))))

(defun lxt-expected-positions (text words)
  "Buffer positions of WORDS, found in order in TEXT."
  (let ((from 0))
    (mapcar (lambda (w)
              (let ((i (string-search w text from)))
                (should i)
                (setq from (+ i (length w)))
                (list w (1+ i))))
            words)))

(defun lxt-pipe (line)
  "Send LINE to the running lxspell as text; return ispell.el's reading
of the answer for each misspelled word: (WORD OFFSET MISS GUESS)."
  (ispell-send-string (concat "^" line "\n"))
  (setq ispell-filter nil)
  (while (progn (ispell-accept-output 5)
                (should (process-live-p ispell-process))
                (not (string= "" (car ispell-filter)))))
  (cl-remove-if-not #'consp (mapcar #'ispell-parse-output
                                    (nreverse (cdr ispell-filter)))))

(ert-deftest lxspell-ispell-region ()
  "ispell-region finds each misspelled word where it stands, with its
suggestions, and puts replacements in the right place."
  (let (seen)
    (lxt-with-buffer
      (cl-letf (((symbol-function 'ispell-command-loop)
                 (lambda (miss _guess word start end)
                   (should (equal (buffer-substring-no-properties start end) word))
                   (push (list word start miss) seen)
                   (and miss (member word '("sandwhich" "souflé" "cafè"))
                        (car miss)))))
        (ispell-region (point-min) (point-max)))
      (setq seen (nreverse seen))
      (should (equal (mapcar #'car seen) (mapcar #'car lxt-misspelled)))
      (cl-loop for (word _start miss) in seen
               for want = (cadr (assoc word lxt-misspelled))
               when want do (should (member want miss)))
      ;; The first suggestion replaced three words; "souflé" stood behind
      ;; a replacement one character shorter on its line.
      (should (equal (buffer-substring-no-properties (point-min) (1+ (length lxt-text)))
                     (replace-regexp-in-string
                      "cafè" "café"
                      (replace-regexp-in-string
                       "souflé" "soufflé"
                       (replace-regexp-in-string "sandwhich" "sandwich" lxt-text))))))))

(defun lxt-flyspell-words ()
  (sort (cl-loop for ov in (overlays-in (point-min) (point-max))
                 when (flyspell-overlay-p ov)
                 collect (list (buffer-substring-no-properties (overlay-start ov)
                                                               (overlay-end ov))
                               (overlay-start ov)))
        (lambda (a b) (< (cadr a) (cadr b)))))

(defun lxt-flyspell-check (large)
  (lxt-with-buffer
    (let ((flyspell-large-region (if large 1 most-positive-fixnum)))
      (flyspell-mode 1)
      (flyspell-buffer)
      ;; The keyword of the LocalWords line is no word of the lexicon; a
      ;; word of mixed case, it is reported or not as the options say.
      (let ((words (cl-remove "LocalWords" (lxt-flyspell-words) :key #'car :test #'equal)))
        (flyspell-mode -1)
        (should (equal words (lxt-expected-positions
                              lxt-text (mapcar #'car lxt-misspelled))))))))

(ert-deftest lxspell-flyspell-word-by-word ()
  "flyspell-buffer over a small buffer asks word by word in the pipe."
  (lxt-flyspell-check nil))

(ert-deftest lxspell-flyspell-large-region ()
  "flyspell-buffer over a large region runs lxspell -l over the text."
  (lxt-flyspell-check t))

;; Offsets count characters from the start of the line, its '^' included.
(ert-deftest lxspell-pipe-offsets-and-suggestions ()
  "The offset of a word behind non-ASCII words counts characters."
  (lxt-restart)
  (ispell-init-process)
  (let ((answer (lxt-pipe "Dvořák's café: a symphnoy")))
    (should (= (length answer) 1))
    (should (equal (nth 0 (car answer)) "symphnoy"))
    (should (equal (nth 1 (car answer)) (1+ (length "Dvořák's café: a "))))
    (should (member "symphony" (nth 2 (car answer)))))
  (lxt-restart))

(ert-deftest lxspell-session-and-personal-words ()
  "@word accepts a word for the session; *word and # keep it in the
personal lexicon, so that a new process accepts it."
  (when (file-exists-p ispell-personal-dictionary)
    (delete-file ispell-personal-dictionary))
  (lxt-restart)
  (ispell-init-process)
  (should (lxt-pipe "frobnicate"))
  (ispell-send-string "@frobnicate\n")
  (should (null (lxt-pipe "frobnicate")))
  (should (lxt-pipe "brûlée"))
  ;; What ispell.el does for the answer "i" (insert into the personal
  ;; lexicon), and when it saves.
  (ispell-send-string "*brûlée\n")
  (setq ispell-pdict-modified-p '(t))
  (ispell-pdict-save t)
  (should (null (lxt-pipe "brûlée")))
  ;; A new process has forgotten the session's word, not the personal one.
  (lxt-restart)
  (ispell-init-process)
  (should (equal (mapcar #'car (lxt-pipe "brûlée frobnicate")) '("frobnicate")))
  (should (file-exists-p ispell-personal-dictionary))
  (lxt-restart))

(ert-deftest lxspell-readme-settings ()
  "The settings the README gives: no -d and no -p, so lxspell finds its
bundled lexicon by itself and keeps words in its default personal lexicon."
  (let ((ispell-local-dictionary-alist
         '((nil "[[:alpha:]]" "[^[:alpha:]]" "[']" nil nil nil utf-8)))
        (ispell-personal-dictionary nil)
        (ispell-current-personal-dictionary nil))
    (lxt-restart)
    (ispell-init-process)
    (should (equal (mapcar #'car (lxt-pipe "The café served a symphnoy")) '("symphnoy")))
    (lxt-restart)))

(ert-deftest lxspell-plain-settings ()
  "With only ispell-program-name set, ispell.el passes the default entry's
-B and talks ISO 8859-1; ASCII text checks all the same."
  (let ((ispell-local-dictionary-alist nil)
        (ispell-personal-dictionary nil)
        (ispell-current-personal-dictionary nil))
    (lxt-restart)
    (ispell-init-process)
    (should (equal (ispell-get-coding-system) 'iso-8859-1))
    (should (equal (mapcar (lambda (m) (list (nth 0 m) (nth 1 m)))
                           (lxt-pipe "The chair has a symphnoy"))
                   '(("symphnoy" 17))))
    (lxt-restart)))

(ert-run-tests-batch-and-exit)
