// Jets: numbers that carry their derivatives along. A function that is written with the operations below gives, besides
// its value, its derivatives by JET_DIMENSION variables at once, exact up to rounding. JET_DIMENSION, 1 or more, comes
// from the stage. The length of a vector (x, y) and its gradient:
//
//     #define JET_DIMENSION 2
//     (the include line of this file)
//     ...
//     Jet x = jetVariable(p.x, 0);
//     Jet y = jetVariable(p.y, 1);
//     Jet distance = jetSqrt(jetAdd(jetMultiply(x, x), jetMultiply(y, y)));
//     // distance.a is the length; distance.v[0], distance.v[1] are its derivatives by x and y
//
// Where an operation has no derivative or no value, what comes out is told with it; nothing is checked.

#ifndef JET_DIMENSION
#error JET_DIMENSION must be defined before Jet.glsl is included
#endif

struct Jet
{
    float a;                // the value
    float v[JET_DIMENSION]; // its derivatives
};

// f(x) from its value and f'(x).
Jet jetOf(float value, float slope, Jet x)
{
    Jet result;
    result.a = value;
    for (int i = 0; i < JET_DIMENSION; ++i)
        result.v[i] = slope * x.v[i];
    return result;
}

// f(x, y) from its value and its derivatives by x and by y.
Jet jetOf(float value, float slope_x, Jet x, float slope_y, Jet y)
{
    Jet result;
    result.a = value;
    for (int i = 0; i < JET_DIMENSION; ++i)
        result.v[i] = slope_x * x.v[i] + slope_y * y.v[i];
    return result;
}

// A number that depends on no variable.
Jet jetConstant(float value)
{
    Jet result;
    result.a = value;
    for (int i = 0; i < JET_DIMENSION; ++i)
        result.v[i] = 0.0;
    return result;
}

// Variable number `index` itself, 0 <= index < JET_DIMENSION.
Jet jetVariable(float value, int index)
{
    Jet result = jetConstant(value);
    result.v[index] = 1.0;
    return result;
}

// (x + s)' = x'
Jet jetAdd(Jet x, float s)
{
    return jetOf(x.a + s, 1.0, x);
}

// (x + y)' = x' + y'
Jet jetAdd(Jet x, Jet y)
{
    return jetOf(x.a + y.a, 1.0, x, 1.0, y);
}

// (x - s)' = x'
Jet jetSubtract(Jet x, float s)
{
    return jetOf(x.a - s, 1.0, x);
}

// (x - y)' = x' - y'
Jet jetSubtract(Jet x, Jet y)
{
    return jetOf(x.a - y.a, 1.0, x, -1.0, y);
}

// (x s)' = x' s
Jet jetMultiply(Jet x, float s)
{
    return jetOf(x.a * s, s, x);
}

// (x y)' = x' y + x y'
Jet jetMultiply(Jet x, Jet y)
{
    return jetOf(x.a * y.a, y.a, x, x.a, y);
}

// (1 / x)' = -x' / x^2. At x = 0 nothing of the result means anything; where x^2 leaves the range of a float (|x| below
// 1e-19 or above 1e19) the derivatives do not.
Jet jetInverse(Jet x)
{
    float inverse = 1.0 / x.a;
    return jetOf(inverse, -inverse * inverse, x);
}

// (x / y)' = (x' - y' x / y) / y. At y = 0 nothing of the result means anything.
Jet jetDivide(Jet x, Jet y)
{
    float quotient = x.a / y.a;
    float inverse = 1.0 / y.a;
    return jetOf(quotient, inverse, x, -quotient * inverse, y);
}

// sqrt(x)' = x' / (2 sqrt(x)). At x = 0 the value is 0 and the derivatives mean nothing, not even those by variables
// that x does not depend on; below 0 the value does not either.
Jet jetSqrt(Jet x)
{
    float root = sqrt(x.a);
    return jetOf(root, 0.5 / root, x);
}

// sin(x)' = x' cos(x), x in radians
Jet jetSin(Jet x)
{
    return jetOf(sin(x.a), cos(x.a), x);
}

// cos(x)' = -x' sin(x), x in radians
Jet jetCos(Jet x)
{
    return jetOf(cos(x.a), -sin(x.a), x);
}
