// One picture whose rows are made by several ranks: each opens the picture for itself, makes a run of rows, or pieces
// of what all make together, and writes them at their places, or, where the format has none, hands them to the first.
#pragma once

#include <string>

#include "kit/pictures/destination.h"
#include "kit/pictures/picture_rows.h"

namespace norv {

// Whether there are ranks to share with, and all steps on the way to this picture know how to make a part of it, or one
// of them how it is made together.
bool MayShareRows(const PictureSource& made);

// On the first rank, instead of CopyRows(). path: of the result; temporary: the file that it is written to meanwhile;
// seen: what of the other ranks' rows does not pass the sink is added.
void ShareRows(PictureSource made, const PictureSink& to, const std::string& path, const std::string& temporary,
               const WriteChoice& choice, Finiteness& seen, const char* doing);

// On another, that has been called. The same picture.
void HelpWithRows(PictureSource made, const WriteChoice& choice);

}  // namespace norv
