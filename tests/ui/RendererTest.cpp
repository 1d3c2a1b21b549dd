#include "ui/Renderer.h"

#include <gtest/gtest.h>

using namespace kelvane;

// OpenGL where the display has a driver of its own; Qt's software renderer where it has none, where
// its OpenGL is drawn by the processor, or where the user asks for it; the OpenGL driver is not
// even asked about when the answer is known without it.
TEST(Renderer, DrawsWithOpenGLOnlyOnADriverOfItsOwn)
{
    const struct {
        const char* asked;
        const char* platform;
        const char* driver;
        QSGRendererInterface::GraphicsApi api;
        const char* line;
    } cases[] = {
        {"", "xcb", "AMD Radeon Graphics (radeonsi, renoir, LLVM 15.0.6, DRM 3.49)", QSGRendererInterface::OpenGL,
         "Drawing with OpenGL (AMD Radeon Graphics (radeonsi, renoir, LLVM 15.0.6, DRM 3.49))."},
        {"", "xcb", "llvmpipe (LLVM 15.0.6, 256 bits)", QSGRendererInterface::Software,
         "Drawing in software: the display's OpenGL (llvmpipe (LLVM 15.0.6, 256 bits)) is itself drawn by the "
         "processor."},
        {" OpenGL\n", "xcb", "llvmpipe (LLVM 15.0.6, 256 bits)", QSGRendererInterface::OpenGL,
         "Drawing with OpenGL (llvmpipe (LLVM 15.0.6, 256 bits))."},
        {"", "xcb", "", QSGRendererInterface::Software, "Drawing in software: the display offers no OpenGL."},
        {"opengl", "xcb", "", QSGRendererInterface::Software, "Drawing in software: the display offers no OpenGL."},
        {"software", "xcb", nullptr, QSGRendererInterface::Software,
         "Drawing in software: asked for by KELVANE_RENDERER."},
        {"opengl", "offscreen", nullptr, QSGRendererInterface::Software, "Drawing in software: there is no display."},
        {"vulkan", "xcb", "Mesa Intel(R) UHD Graphics 620 (KBL GT2)", QSGRendererInterface::OpenGL,
         "Drawing with OpenGL (Mesa Intel(R) UHD Graphics 620 (KBL GT2))."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.asked) + " / " + c.platform);
        bool asked = false;
        const Renderer chosen = Renderer::decide(c.asked, c.platform, [&] {
            asked = true;
            return QString::fromUtf8(c.driver);
        });
        EXPECT_EQ(chosen.api, c.api);
        EXPECT_EQ(chosen.description.toStdString(), c.line);
        EXPECT_EQ(asked, c.driver != nullptr);
    }
}
