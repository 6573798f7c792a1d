#include <cstdio>
#include <exception>
#include <map>
#include <new>
#include <string>

#include <CLI/CLI.hpp>

#include "DrawCommand.h"
#include "InspectCommand.h"

namespace {

constexpr int FileError = 1;
constexpr int UsageError = 2;

void AddDraw(CLI::App& app, Command::DrawOptions& options)
{
    CLI::App* draw = app.add_subcommand("draw", "Draw an SVG file into a picture");
    draw->add_option("IN", options.input, "The drawing: .svg or .svgz")->required();
    draw->add_option("OUT", options.output, "The picture: .png, .gif, .jpg, .webp, .tif or .exr");
    CLI::Option* width = draw->add_option("--width", options.width,
                                          "Width of the picture in pixels; its height follows");
    draw->add_option("--scale", options.scale, "Pixels of the picture per pixel of the drawing")
        ->excludes(width);
    draw->add_option("--format", options.format,
                     "Pixel format that is drawn in: rgba8, rgba16, ia8, ia16, cmyka8, laba16 or "
                     "rgbauf; the file gets what it can hold of it")
        ->capture_default_str();
    draw->add_option("--profile", options.profile,
                     "ICC profile of the picture, of the format's colours; sRGB without it");
    draw->add_option("--background", options.background,
                     "Colour below the drawing, as in CSS; transparent without it");
    draw->add_flag("--dither", options.dither,
                   "Dither gradients, and images of more than 8 bits, into formats of 8 bits");
    draw->add_flag("--perfect-clipping", options.perfectClipping,
                   "Cut shapes by the exact area that they share with their clips");
    CLI::Option* colours = draw->add_option(
        "--colours", options.palette.colours,
        "At most this many colours, 2 to 256, chosen for the picture: .gif (256 without it), .png");
    draw->add_option("--palette", options.palette.palette,
                     "Fixed colours instead: web, mac, windows, grey or bw")
        ->excludes(colours);
    draw->add_flag("--diffuse", options.palette.diffuse,
                   "Spread what the palette misses of a pixel's colour over its neighbours");
    const std::map<std::string, Command::Target> targets{{"bitmap", Command::Target::Bitmap},
                                                         {"wireframe", Command::Target::Wireframe},
                                                         {"null", Command::Target::Null}};
    draw->add_option_function<std::string>(
            "--target",
            [&options, targets](const std::string& name) { options.target = targets.at(name); },
            "bitmap; wireframe: black outlines of all shapes; null: no file, prints which "
            "pixels would be touched, and the numbers of calls")
        ->check(CLI::IsMember(targets));
}

CLI::App* AddInspect(CLI::App& app, std::string& path)
{
    CLI::App* inspect = app.add_subcommand("inspect", "Print a file of saved values as a tree");
    inspect->add_option("FILE", path, "The file; what is wrong with a damaged one is told")
        ->required();
    return inspect;
}

int Fail(int status, const char* message)
{
    std::fprintf(stderr, "renderer: %s\n", message);
    return status;
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app("Draws vector drawings and shows saved values.", "renderer");
    app.set_version_flag("--version", "renderer " RENDERER_VERSION);
    app.require_subcommand(1);
    Command::DrawOptions options;
    AddDraw(app, options);
    std::string saved;
    const CLI::App* const inspect = AddInspect(app, saved);
    try {
        app.parse(argc, argv);
        if (inspect->parsed())
            Command::Inspect(saved);
        else
            Command::Draw(options);
        return 0;
    } catch (const CLI::ParseError& error) {
        const bool isQuestion = error.get_exit_code() == 0; // --help or --version, answered here
        return isQuestion ? app.exit(error) : Fail(UsageError, error.what());
    } catch (const Command::UsageException& error) {
        return Fail(UsageError, error.what());
    } catch (const std::bad_alloc&) {
        return Fail(FileError, "out of memory");
    } catch (const std::exception& error) {
        return Fail(FileError, error.what());
    }
}
