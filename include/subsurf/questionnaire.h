/* Questionnaires: scored multiple-choice forms loaded from comma-separated
 * files (docs/questionnaires.md), answered, navigated and totalled by section.
 *
 * A loaded questionnaire is addressed by an integer handle (from 1). Questions
 * and answers are addressed by position, from 1. Every argument is passed by
 * pointer; texts are blank-padded fields: titles and section names 40
 * characters, question and answer texts 200, labels and codes 20, file names
 * 260. A chosen answer is an index from 1; the integer null (IQ_I_NULL) means
 * unanswered and -1 "does not apply" (neither counted nor totalled). Unset
 * scores are the real null. Status words: 0 done, 1 failed or not found.
 */
#ifndef SUBSURF_QUESTIONNAIRE_H
#define SUBSURF_QUESTIONNAIRE_H

#include "subsurf/scalars.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A question as copied out: text, section, chosen answer, score, label. */
typedef struct QA_QUESTION {
  char TEXT[200];
  int ISEC;
  int IANS;
  float SCORE;
  char LABEL[20];
} QA_QUESTION;

/* An answer as copied out: text, go-to label, second code, score, and the
 * position of the question the go-to label names (0 = none). */
typedef struct QA_ANSWER {
  char TEXT[200];
  char GOTO[20];
  char CODE[20];
  float SCORE;
  int IGOTO;
} QA_ANSWER;

/* One question's result from QA_GETANSWERS. */
typedef struct QA_RESULT {
  int IANS;
  float SCORE;
  char LABEL[20];
} QA_RESULT;

/* A new empty questionnaire (blank title, null numbers, no questions). */
void QA_INIT(int* handle);
void QA_QINIT(QA_QUESTION* question);
void QA_AINIT(QA_ANSWER* answer);
/* Reads a file into a new questionnaire; on failure the message names the file
 * and line, status is 1 and handle 0. */
void QA_LOAD(const char* file, int* handle, int* status);
/* Frees the questionnaire with its sections, questions and answers; handle := 0. */
void QA_QSDEL(int* handle, int* status);

void QA_GETTITLE(const int* handle, char* title, int* event, int* answersRequired, int* status);
void QA_GETQ(const int* handle, const int* iq, QA_QUESTION* question, int* status);
void QA_GETA(const int* handle, const int* iq, const int* ia, QA_ANSWER* answer, int* status);
/* The name (40) and current total of section s (0..QA_NSECS). */
void QA_GETSEC(const int* handle, const int* s, char* name, float* total, int* status);

void QA_NQUS(const int* handle, int* count);
/* The number of sections declared (the last section index). */
void QA_NSECS(const int* handle, int* count);
void QA_NANS(const int* handle, const int* iq, int* count);

/* Position of the current question; 0 when there is none. */
void QA_GETIQ(const int* handle, int* iq);
/* Makes question n current (unchanged when there is no such question). */
void QA_SETIQ(const int* handle, const int* n);
/* Makes the n-th question of section s current (s = 0: of any section). */
void QA_SETISECQ(const int* handle, const int* s, const int* n);
/* Makes the first question of section s current. */
void QA_GOTOSEC(const int* handle, const int* s);
/* Position of the question with this label (20); 0 and status 1 when none. */
void QA_GETQLAB(const int* handle, const char* label, int* iq, int* status);

void QA_RESET(const int* handle);
void QA_SETANS(const int* handle, const int* iq, const int* chosen, int* status);
/* Chosen answers of the first n questions from an array. */
void QA_SETANSWERS(const int* handle, const int* chosen, const int* n);
/* Question iq's score from its answer at index (null when below 1 or beyond). */
void QA_SETSCORE(const int* handle, const int* iq, const int* index);
void QA_SETSCORES(const int* handle);
void QA_GETSCORE(const int* handle, const int* iq, float* score);
/* Section totals over section s (0 = all); unanswered counts the questions
 * without an answer, the first of which becomes current. */
void QA_CHECK(const int* handle, const int* s, int* unanswered);
/* Rescores every question; fills results[0..capacity-1] and copies the section
 * descriptors 0..min(sections, sectionCapacity)-1. */
void QA_GETANSWERS(const int* handle, QA_RESULT* results, DT_CSCA* sections, const int* capacity,
                   const int* sectionCapacity);
/* Writes the questionnaire as text lines to a writing channel (A_OPENASC). */
void QA_SHOW(const int* handle, const int* channel);

#ifdef __cplusplus
}
#endif

#endif
