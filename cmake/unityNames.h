// Comes before each of the files that are compiled as one, so that it has no guard. The constant
// that each file which logs defines gets another name in each of them.
#undef kLogModule
#undef ZAMO_JOINED
#undef ZAMO_NAME_IN
#define ZAMO_JOINED(name, unit) name##unit
#define ZAMO_NAME_IN(unit, name) ZAMO_JOINED(name, unit)
#define kLogModule ZAMO_NAME_IN(ZAMO_UNIT, kLogModule)
