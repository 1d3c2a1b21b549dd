#include "ui/Renderer.h"

#include <gtest/gtest.h>

using namespace kelvane;

// OpenGL where the display has a driver of its own; Qt's software renderer where it has none, where
// the machine has no graphics device, where its OpenGL is drawn by the processor, or where the user
// asks for it; the OpenGL driver is not even loaded when the answer is known without it.
TEST(Renderer, DrawsWithOpenGLOnlyOnADriverOfItsOwn)
{
    const struct {
        const char* asked;
        const char* platform;
        bool device;
        const char* driver;
        QSGRendererInterface::GraphicsApi api;
        const char* line;
    } cases[] = {
        {"", "xcb", true, "AMD Radeon Graphics (radeonsi, renoir, LLVM 15.0.6, DRM 3.49)", QSGRendererInterface::OpenGL,
         "Drawing with OpenGL (AMD Radeon Graphics (radeonsi, renoir, LLVM 15.0.6, DRM 3.49))."},
        {"", "xcb", true, "llvmpipe (LLVM 15.0.6, 256 bits)", QSGRendererInterface::Software,
         "Drawing in software: the display's OpenGL (llvmpipe (LLVM 15.0.6, 256 bits)) is itself drawn by the "
         "processor."},
        {" OpenGL\n", "xcb", true, "llvmpipe (LLVM 15.0.6, 256 bits)", QSGRendererInterface::OpenGL,
         "Drawing with OpenGL (llvmpipe (LLVM 15.0.6, 256 bits))."},
        {"", "xcb", true, "", QSGRendererInterface::Software, "Drawing in software: the display offers no OpenGL."},
        {"opengl", "xcb", true, "", QSGRendererInterface::Software,
         "Drawing in software: the display offers no OpenGL."},
        {"software", "xcb", true, nullptr, QSGRendererInterface::Software,
         "Drawing in software: asked for by KELVANE_RENDERER."},
        {"opengl", "offscreen", true, nullptr, QSGRendererInterface::Software,
         "Drawing in software: there is no display."},
        {"", "xcb", false, nullptr, QSGRendererInterface::Software,
         "Drawing in software: the machine has no graphics device."},
        {"opengl", "xcb", false, "llvmpipe (LLVM 15.0.6, 256 bits)", QSGRendererInterface::OpenGL,
         "Drawing with OpenGL (llvmpipe (LLVM 15.0.6, 256 bits))."},
        {"vulkan", "xcb", true, "Mesa Intel(R) UHD Graphics 620 (KBL GT2)", QSGRendererInterface::OpenGL,
         "Drawing with OpenGL (Mesa Intel(R) UHD Graphics 620 (KBL GT2))."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.asked) + " / " + c.platform);
        bool asked = false;
        const Renderer chosen = Renderer::decide(c.asked, c.platform, c.device, [&] {
            asked = true;
            return QString::fromUtf8(c.driver);
        });
        EXPECT_EQ(chosen.api, c.api);
        EXPECT_EQ(chosen.description.toStdString(), c.line);
        EXPECT_EQ(asked, c.driver != nullptr);
    }
}
