// Reading a stored coordinate text back as a number.
#ifndef TARVOFRAMEWORK_SRC_STORE_COORDINATETEXT_H_
#define TARVOFRAMEWORK_SRC_STORE_COORDINATETEXT_H_

namespace tarvo {
namespace store {

// The value of the longest decimal number at the start of `text`, after
// leading white space: optional sign, digits with an optional fraction
// ("." whatever the process locale), optional exponent. Anything after the
// number is ignored ("12.5abc" is 12.5). A text that does not begin with a
// number, including hexadecimal, "inf" and "nan", and a null text read as
// 0.0. Out-of-range values become +-HUGE_VAL or the nearest tiny value, as
// strtod gives them. Thread-safe; never throws.
double coordinateFromText(const char* text);

}  // namespace store
}  // namespace tarvo

#endif  // TARVOFRAMEWORK_SRC_STORE_COORDINATETEXT_H_
