// Colours multiplied by alpha while a picture is scaled, so that the colour behind what is transparent has no say in
// what is seen (Porter and Duff 1984).
#pragma once

namespace norv {

struct Picture;

// Every colour x alpha / 255; of pictures without alpha nothing. Where alpha is 255 the very bits stay.
void Premultiply(Picture& picture);

// Back after scaling: every colour x 255 / alpha, moved to the nearest end of 0..255 (of pictures of floats only where
// alpha is small), and alpha likewise. What rounds to alpha 0 at the picture's precision becomes black. Pixel by pixel.
// Where alpha is 255 to within what scaling a constant plane leaves of it, it is 255 and the very bits of the colours
// stay, so that opaque pictures come out as without all this.
void Unpremultiply(Picture& picture);

}  // namespace norv
