/*
 * The host's external-call interface: what a loaded library may ask of its host.
 *
 * A host implements every function here; the statistics library calls them and nothing else.
 * The embedded host (libvexelc) is one implementation.
 *
 * Rules that hold for every function unless its comment says otherwise:
 *
 * - kv is the kernel vector that the host handed to the library.  It must not be NULL.
 * - ALGEB handles belong to the host.  Nobody frees one; the host's collector does.
 * - A function that "may collect" may run the collector.  Handles on the machine stack, in
 *   VexelAlloc blocks, in data blocks of arrays of host objects and in protected objects survive.
 *   Every function that returns a new object, evaluates, raises or converts may collect; those
 *   marked "does not collect" never do.
 * - A function that "raises" does so with a C++ exception of the host's own that unwinds through
 *   the library and runs destructors.  The library never catches it; VexelTrapError does.
 *   Therefore no function is noexcept, in C++ either.
 * - Indices into sequences and lists count from 1.
 * - Everything happens on one thread.
 *
 * Object layout that libraries rely on.  A handle with lowest bit 1 is an immediate small integer
 * and must not be dereferenced.  Any other handle points at words of a handle's width; word 0 is
 * the header, whose low 32 bits hold the type tag in their top six bits.  Words 1 and 2 of a range
 * (tag 36) and an equation (tag 21) are its two operands, which libraries read and write there.
 */
#ifndef VEXELC_VEXELC_H
#define VEXELC_VEXELC_H

#include <stdint.h>

#if defined(__cplusplus)
#define VEXELC_NORETURN [[noreturn]]
extern "C" {
#else
#define VEXELC_NORETURN _Noreturn
#endif

/* ---- types ---- */

/* Handle of a host object. */
typedef struct VexelObject *ALGEB;

/* Handle of the host itself. */
typedef struct _VKernelVectorDesc *VKernelVector;

typedef int64_t V_INT;  /* a machine integer: counts, indices, bounds */
typedef int32_t V_BOOL; /* 0 or 1 */

/* Type tags in the top six bits of an object header's low 32 bits (those that libraries use). */
#define VEXEL_TAG_FLOAT 4
#define VEXEL_TAG_EQUATION 21
#define VEXEL_TAG_RANGE 36
#define VEXEL_HEADER_TAG_MASK 0xFC000000u

/* Element types of arrays. */
enum {
  RTABLE_DAG = 0,         /* host objects, one ALGEB each */
  RTABLE_COMPLEX_DAG = 1, /* pairs of host objects: real, imaginary */
  RTABLE_INTEGER8 = 2,
  RTABLE_INTEGER16 = 3,
  RTABLE_INTEGER32 = 4,
  RTABLE_INTEGER64 = 5,
  RTABLE_FLOAT64 = 6,
  RTABLE_COMPLEX = 7, /* pairs of doubles: real, imaginary */
  RTABLE_FLOAT32 = 8
};

/* Storage codes. */
enum {
  RTABLE_SPARSE = 1,     /* only non-zero elements are held; there is no data block */
  RTABLE_RECTANGULAR = 4 /* dense: every element, contiguous */
};

/* Order codes of a dense block of two or more dimensions. */
enum {
  RTABLE_COLUMN_MAJOR = 0, /* the first index runs fastest */
  RTABLE_ROW_MAJOR = 1     /* the last index runs fastest */
};

enum { RTABLE_MAX_DIMENSIONS = 63 };

/* What an array is like, apart from its bounds and its elements. */
typedef struct {
  int32_t data_type;      /* RTABLE_DAG ... RTABLE_FLOAT32 */
  int32_t storage;        /* RTABLE_RECTANGULAR or RTABLE_SPARSE */
  int32_t order;          /* RTABLE_COLUMN_MAJOR or RTABLE_ROW_MAJOR */
  int32_t num_dimensions; /* 0 ... RTABLE_MAX_DIMENSIONS */
  int32_t read_only;      /* nonzero: RTableAssign raises */
} RTableSettings;

/* One element of an array; which member is in force follows from the array's element type. */
typedef union {
  ALGEB dag;
  struct {
    ALGEB re, im;
  } complexdag;
  int8_t int8;
  int16_t int16;
  int32_t int32;
  int64_t int64;
  double float64;
  struct {
    double re, im;
  } complexf64;
  float float32;
} RTableData;

/* ---- arguments and sequences ---- */

/*
 * The number of elements of a sequence or a list; 0 for NULL (the empty sequence); 1 for any other
 * object.  Raises nothing, does not collect.
 */
V_INT VexelNumArgs(VKernelVector kv, ALGEB seq);

/*
 * Element i of a sequence or list, from 1.  For any other object, i = 1 gives the object itself.
 * Raises a host error when i is out of range.  Does not collect.
 */
ALGEB VexelExpseqSelect(VKernelVector kv, ALGEB seq, V_INT i);

/*
 * A new sequence of n elements, each NULL until assigned.  It stays a sequence object of n
 * elements even for n = 1, so that it can be filled; as an argument sequence of one element it
 * stands for that element.  n < 0 raises.
 */
ALGEB NewVexelExpressionSequence(VKernelVector kv, V_INT n);

/* Sets element i (from 1) of a sequence.  Raises when i is out of range. */
void VexelExpseqAssign(VKernelVector kv, ALGEB seq, V_INT i, ALGEB value);

/* A sequence of the n objects that follow (each an ALGEB): n = 0 gives NULL, n = 1 the object. */
ALGEB ToVexelExpressionSequence(VKernelVector kv, V_INT n, ...);

/* ---- type tests: raise nothing, do not collect ---- */

V_BOOL IsVexelNumeric(VKernelVector kv, ALGEB x); /* integer, rational or float, undefined and
                                                     infinities included; complex is not numeric */
V_BOOL IsVexelRTable(VKernelVector kv, ALGEB x);  /* an array */
V_BOOL IsVexelList(VKernelVector kv, ALGEB x);
V_BOOL IsVexelProcedure(VKernelVector kv, ALGEB x); /* a procedure of the language, a built-in or a
                                                       machine function */
V_BOOL IsVexelPointer(VKernelVector kv, ALGEB x);   /* made by ToVexelPointer */
V_BOOL IsVexelNULL(VKernelVector kv, ALGEB x);      /* the empty sequence, or an unset element */
V_BOOL IsVexelInteger32(VKernelVector kv, ALGEB x); /* an integer that fits 32 signed bits */
V_BOOL IsVexelInteger8(VKernelVector kv, ALGEB x);  /* an integer that fits 8 signed bits */
V_BOOL IsVexelUnnamedZero(VKernelVector kv, ALGEB x);  /* the integer 0 or a float zero */
V_BOOL IsVexelAssignedName(VKernelVector kv, ALGEB x); /* a name that has a value */

/* ---- conversions from host objects ---- */

/*
 * The nearest double of a number: ties to even; a float beyond the double range gives an infinity,
 * undefined gives NaN.  Raises for anything that is not numeric.  Does not collect otherwise.
 */
double VexelToFloat64(VKernelVector kv, ALGEB x);

/* An integer in range, as it is.  Raises for anything else, floats included. */
int32_t VexelToInteger32(VKernelVector kv, ALGEB x);
V_INT VexelToV_INT(VKernelVector kv, ALGEB x);

/* true and false give 1 and 0, an integer that fits 32 bits its value.  Raises for the rest. */
V_BOOL VexelToV_BOOL(VKernelVector kv, ALGEB x);

/* ---- conversions to host objects: equal numbers, names and strings have equal handles ---- */

ALGEB ToVexelFloat(VKernelVector kv, double d); /* all 53 bits; a NaN gives the one undefined */
ALGEB ToVexelInteger(VKernelVector kv, V_INT i);
ALGEB ToVexelInteger64(VKernelVector kv, int64_t i);
ALGEB ToVexelBoolean(VKernelVector kv, V_INT b); /* 0 false, anything else true */
ALGEB ToVexelComplex(VKernelVector kv, double re, double im);
ALGEB ToVexelComplexFloat(VKernelVector kv, ALGEB re, ALGEB im); /* im zero still gives a complex */
ALGEB ToVexelNULL(VKernelVector kv);

/* The name of that text.  is_global must be nonzero.  The text is copied. */
ALGEB ToVexelName(VKernelVector kv, const char *text, V_BOOL is_global);

/* A relation lhs op rhs; op is "=", "<", "<=", "<>".  Raises for another op. */
ALGEB ToVexelRelation(VKernelVector kv, const char *op, ALGEB lhs, ALGEB rhs);

/* ---- arrays ---- */

/* Fills *s with the host's defaults: host objects, rectangular, column-major, no dimensions. */
void RTableGetDefaults(VKernelVector kv, RTableSettings *s);

/* Fills *s with an array's settings.  Raises when x is no array. */
void RTableGetSettings(VKernelVector kv, RTableSettings *s, ALGEB x);

/*
 * A new array.  bounds holds lower and upper bound of each dimension in turn; upper < lower makes
 * the dimension empty.  data, unless NULL, points at as many elements as the bounds make, in the
 * order that s names; they are copied.  Otherwise elements are zero (the number 0 for host
 * objects).  Raises for impossible settings or sizes that cannot be held; nothing is then kept.
 */
ALGEB RTableCreate(VKernelVector kv, const RTableSettings *s, const void *data,
                   const V_INT *bounds);

/*
 * A copy of array x with the element type, storage and order of *s (number of dimensions and bounds
 * are x's).  Exact numbers and constants become the nearest float.  Raises when an element cannot
 * be converted to the new type; x itself is never changed.
 */
ALGEB RTableCopy(VKernelVector kv, const RTableSettings *s, ALGEB x);

/*
 * The elements of a rectangular array, first one first; valid while the array is alive.  Writing
 * through it changes the array.  An empty array gives a pointer that must not be read.  Raises when
 * x is no array or its storage is not rectangular.  Does not collect otherwise.
 */
void *RTableDataBlock(VKernelVector kv, ALGEB x);

/* Element count, number of dimensions, bounds of dimension dim (from 1; raises out of range). */
V_INT RTableNumElements(VKernelVector kv, ALGEB x);
V_INT RTableNumDimensions(VKernelVector kv, ALGEB x);
V_INT RTableLowerBound(VKernelVector kv, ALGEB x, V_INT dim);
V_INT RTableUpperBound(VKernelVector kv, ALGEB x, V_INT dim);

/* The element at index (one entry per dimension), of any storage.  Raises out of bounds. */
RTableData RTableSelect(VKernelVector kv, ALGEB x, const V_INT *index);

/* Sets that element.  Raises out of bounds and for a read-only array. */
void RTableAssign(VKernelVector kv, ALGEB x, const V_INT *index, RTableData value);

/* ---- lists, tables, objects ---- */

/* A list of n elements, unset (NULL) until assigned.  n < 0 raises. */
ALGEB VexelListAlloc(VKernelVector kv, V_INT n);
ALGEB VexelListSelect(VKernelVector kv, ALGEB list, V_INT i); /* from 1; raises out of range */
void VexelListAssign(VKernelVector kv, ALGEB list, V_INT i, ALGEB value);

/* An empty table.  Keys are compared by handle (arrays and tables are keys by identity). */
ALGEB VexelTableAlloc(VKernelVector kv);
V_BOOL VexelTableHasEntry(VKernelVector kv, ALGEB table, ALGEB key);
ALGEB VexelTableSelect(VKernelVector kv, ALGEB table, ALGEB key); /* raises for a missing key */
void VexelTableAssign(VKernelVector kv, ALGEB table, ALGEB key, ALGEB value);

/*
 * A raw object of length words, header included, with the given type tag; the other words are NULL
 * handles that the caller fills.  Only tags 21 and 36 with length 3 are supported; others raise.
 */
ALGEB VexelNew(VKernelVector kv, V_INT type_id, V_INT length);

/* The sum of two numbers, exact if both are exact.  Raises for anything else. */
ALGEB VexelNumericAdd(VKernelVector kv, ALGEB a, ALGEB b);

/* ---- evaluation: may raise whatever is evaluated raises, and an interrupt ---- */

/* x evaluated: a name gives its value (itself when it has none). */
ALGEB VexelEval(VKernelVector kv, ALGEB x);

/* x in 64-bit hardware floating point.  Raises when x has no hardware value: an unassigned name, a
 * float outside the double range, something that is no number.  Undefined and infinities are
 * values. */
double VexelEvalhf(VKernelVector kv, ALGEB x);

/* proc called in hardware floating point on args[1] ... args[n] (args[0] is not read).  Raises when
 * proc has no hardware form or its value is no hardware number. */
double EvalhfVexelProc(VKernelVector kv, ALGEB proc, int n, const double *args);

/* proc(a1, ..., an) with the n handles that follow. */
ALGEB EvalVexelProc(VKernelVector kv, ALGEB proc, int n, ...);

/* proc called with an argument sequence (or a single object, or NULL for no arguments).  proc may
 * be a name: its value is called, or the function that the host knows under it. */
ALGEB EvalVexelProcedure(VKernelVector kv, ALGEB proc, ALGEB args);

/* Parses and runs text; the value of its last statement. */
ALGEB EvalVexelStatement(VKernelVector kv, const char *text);

/* Gives a name a value and returns the value that it had before (the name itself when it had
 * none); so VexelAssign(kv, name, old) undoes an assignment. */
ALGEB VexelAssign(VKernelVector kv, ALGEB name, ALGEB value);

/*
 * Calls fn(data) and catches any host error that it raises.
 *
 * Returns what fn returned, with *failed set to 0; or, if fn raised, NULL with *failed set to
 * 1.  The error caught is discarded: its message is never shown.  Traps nest, and each catches
 * only what is raised inside it.
 *
 * Handles that live on the machine stack or in VexelAlloc blocks stay valid across the call.  Host
 * variables that fn assigned before it raised keep their new values.  An interrupt is not an error
 * and is not caught; nor are exceptions that are not the host's.
 *
 * kv, fn and failed must not be NULL; data is passed through.
 */
void *VexelTrapError(VKernelVector kv, void *(*fn)(void *data), void *data, V_BOOL *failed);

/* ---- errors and output ---- */

/*
 * Raise a host error whose text is message with %1 and %2 replaced by the printed form of the
 * objects (message is copied).  Do not return.
 */
VEXELC_NORETURN void VexelRaiseError(VKernelVector kv, const char *message);
VEXELC_NORETURN void VexelRaiseError1(VKernelVector kv, const char *message, ALGEB arg1);
VEXELC_NORETURN void VexelRaiseError2(VKernelVector kv, const char *message, ALGEB arg1,
                                      ALGEB arg2);

/* Shows text to the user when the channel's level is at least level.  Raises nothing. */
void VexelUserInfo(VKernelVector kv, int level, const char *channel, const char *text);

/* ---- memory and collection ---- */

/*
 * size bytes, aligned for any type and cleared, scanned by the collector and freed by it when no
 * longer reachable from the machine stack or other reachable blocks.  Raises when there is no
 * memory.
 */
void *VexelAlloc(VKernelVector kv, V_INT size);

/* Keep x alive until as many VexelGcAllow calls have been made.  Do not collect. */
void VexelGcProtect(VKernelVector kv, ALGEB x);
void VexelGcAllow(VKernelVector kv, ALGEB x); /* without effect when x is not protected */

/* Inside a mark function only: marks x reachable. */
void VexelGcMark(VKernelVector kv, ALGEB x);

/*
 * A pointer object that carries an address of the library's and a type value of its choosing.
 * mark runs in every collection that reaches the object; it may call VexelToPointer,
 * VexelPointerType, IsVexelPointer and VexelGcMark and nothing else.  dispose runs once, when the
 * object is found unreachable or the host ends; the handle is still readable by the same functions.
 */
ALGEB ToVexelPointer(VKernelVector kv, void *address, V_INT type);
void *VexelToPointer(VKernelVector kv, ALGEB x);   /* raises when x is no pointer object */
V_INT VexelPointerType(VKernelVector kv, ALGEB x); /* raises when x is no pointer object */
void VexelPointerSetMarkFunction(VKernelVector kv, ALGEB x, void (*mark)(ALGEB x));
void VexelPointerSetDisposeFunction(VKernelVector kv, ALGEB x, void (*dispose)(ALGEB x));

/* ---- random numbers: one draw of the host's stream each; may raise an interrupt ---- */

int32_t VexelRandomInt32(VKernelVector kv);   /* uniform over all 32-bit integers */
double VexelRandomDouble01(VKernelVector kv); /* uniform in the unit interval */

#if defined(__cplusplus)
} /* extern "C" */
#endif

#endif /* VEXELC_VEXELC_H */
