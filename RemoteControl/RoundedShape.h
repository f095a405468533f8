#pragma once

#include <Evas.h>

/// A white rectangle with round, smooth corners, to be coloured and resized like any object: filled, or the
/// frame of it where `stroke` is not 0. `radius` and `stroke` are in pixels. The canvas owns it.
Evas_Object* AddRoundedShape(Evas* canvas, int radius, int stroke = 0);
