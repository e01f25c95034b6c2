// Elementary functions that give the same floats on every machine: additions, products, quotients and roots of doubles
// alone, which all round alike. The C library's own differ in a last bit here and there.
#ifndef KVX_PAINTER_FUNCTIONS_H_
#define KVX_PAINTER_FUNCTIONS_H_

float Exp(float x);
// Of a base that is not negative.
float Pow(float base, float exponent);
float Sin(float x);
float Cos(float x);
float Atan2(float y, float x);
float Hypot(float x, float y);

#endif  // KVX_PAINTER_FUNCTIONS_H_
