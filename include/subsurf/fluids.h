/* Fluid-property correlations and the fluid-correlation tool's entries.
 *
 * Every argument is passed by pointer. Correlations take single-precision
 * values in fixed oilfield units (psia, degR unless noted degF, API, gas
 * gravity to air, scf/stb, bbl/stb, 1/psi, cp, g/cc, scf/cf) and return the
 * host's real null (-9.9e20) for a missing or out-of-range input. Status
 * words: 0 computed, 1 input missing or not positive (result null), -1 a
 * reduced value outside the correlation's range (result still computed).
 *
 * Entry names are blank-padded fields of 20 characters and unit names of 16;
 * no lengths are passed. Nothing here throws.
 */
#ifndef SUBSURF_FLUIDS_H
#define SUBSURF_FLUIDS_H

#ifdef __cplusplus
extern "C" {
#endif

/* Gas correlations. The pseudo-critical routines clamp negative impurity
 * fractions to 0 in the caller's variables. */
float FC_GASPCP(float* gravity, float* n2, float* co2, float* h2s, int* status);
float FC_GASPCT(float* gravity, float* n2, float* co2, float* h2s, int* status);
/* Pseudo-reduced values from the tool's entries (gden, n2, co2, h2s, pres, tres). */
void FC_GASRED(float* tpr, float* ppr, int* status);
void FC_GASRED1(float* gravity, float* n2, float* co2, float* h2s, float* pressure,
                float* temperature, float* tpr, float* ppr, int* status);
float FC_GASRD(float* tpr, float* ppr, int* status);
float FC_GASZ1(float* tpr, float* ppr, int* status);
/* Chart z-factor; keeps its last bracket (not re-entrant). */
float FC_GASZ2(float* tpr, float* ppr, int* status);
float FC_GASFVF(float* z, float* temperature, float* pressure, float* tsc, float* psc);
float FC_GASVISC(float* gravity, float* z, float* temperature, float* pressure);
float FC_GASDDENS(float* gravity, float* z, float* temperature, float* pressure);
float FC_GASHI(float* density);
float FC_GPC(float* values, float* divisor, float* weights, int* count);

/* Oil correlations. */
float FC_OILPBP(float* gor, float* gasGravity, float* api, float* temperatureR);
float FC_OILGORB(float* temperatureR, float* pressure, float* api, float* gasGravity);
float FC_OILBO(float* gor, float* gasGravity, float* api, float* temperatureR, float* pressure,
               float* bubblePoint);
float FC_OILCO(float* gor, float* gasGravity, float* api, float* temperature, float* pressure,
               int* method, float* bubblePoint, float* otherGor);
float FC_OILDEADVISC(float* api, float* temperatureF);
float FC_OILDEADVISCT(float* knownViscosity, float* targetF, float* referenceF);
float FC_OILVISC(float* deadViscosity, float* gor);
float FC_OILDDENS(float* bo, float* bubblePoint, float* pressure, float* gor,
                  float* gorAtBubblePoint, float* oilSpecificGravity, float* gasGravity);
float FC_OILHI(float* density);
float FC_OILHI1(float* liveViscosity, float* gor, float* temperatureF);

/* The tool's entries. FC_INIT creates the table in the default units of a unit
 * system (1 oilfield, 2 metric, 3 SI; anything else oilfield); FC_CLOSE drops it. */
void FC_INIT(int* unitSystem);
void FC_CLOSE(void);
/* value = null, state = 0, missing = 1 unless the entry has a value, which is
 * then returned converted into the named unit. */
void FC_GETV(const char* name, const char* unit, float* value, int* state, int* missing);
void FC_SETV(const char* name, const char* unit, float* value, int* state);
/* Calculates every entry that is missing or was calculated before. */
void FC_CALCALL(void);
/* Calculates one entry alone; status 0 done, 1 with the answer shown to the
 * user ("No calculation for this entry", "Need a depth!"). */
void FC_CALCENTRY(const char* name, int* status);

#ifdef __cplusplus
}
#endif

#endif /* SUBSURF_FLUIDS_H */
