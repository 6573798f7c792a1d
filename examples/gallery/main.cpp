// gallery FOLDER: draws every picture of the gallery into FOLDER/pictures and writes the page
// around them, FOLDER/gallery.md.
#include <exception>
#include <iostream>

#include "Chapters.h"

int main(int count, char** arguments)
try {
    if (count != 2) {
        std::cerr << "usage: gallery FOLDER\n";
        return 2;
    }
    Gallery::Page page(arguments[1]);
    page.Text("# Gallery");
    page.Text(
        "What the library draws, and the call that draws it. `scripts/gallery` makes this page: "
        "the code on it is read from `examples/gallery`, whose sources drew the pictures, so it "
        "is what they show. Helpers such as `Solid`, `Stops`, `Disc` and `DrawLandscape` are "
        "there, too.");
    Gallery::ShowBlendModes(page);
    Gallery::ShowGradients(page);
    Gallery::ShowBitmaps(page);
    Gallery::ShowGroups(page);
    Gallery::ShowClips(page);
    Gallery::ShowFormats(page);
    Gallery::ShowColourTransforms(page);
    Gallery::ShowStrokes(page);
    Gallery::ShowOutlines(page);
    Gallery::ShowBrushes(page);
    Gallery::ShowTexts(page);
    Gallery::ShowSwitches(page);
    page.Close();
} catch (const std::exception& error) {
    std::cerr << "gallery: " << error.what() << '\n';
    return 1;
}
