#version 440
// The panel's moving backdrops, drawn whole in one pass: drifting clouds, an aurora's curtains,
// falling petals, or a sea's swell. `blur` softens every edge and leaves out the finest detail;
// the body's lower corners are cut round here, as the panel's outline is.
layout(location = 0) in vec2 qt_TexCoord0;
layout(location = 0) out vec4 fragColor;
layout(std140, binding = 0) uniform buf {
    mat4 qt_Matrix;
    float qt_Opacity;
    float time;
    float blur;
    float kind;
    float radius;
    vec2 size;
};

float hash(vec2 p) { return fract(sin(dot(p, vec2(127.1, 311.7))) * 43758.5453); }

float noise(vec2 p)
{
    vec2 i = floor(p), f = fract(p);
    vec2 u = f * f * (3.0 - 2.0 * f);
    return mix(mix(hash(i), hash(i + vec2(1, 0)), u.x), mix(hash(i + vec2(0, 1)), hash(i + vec2(1, 1)), u.x), u.y);
}

// Octaves fade out as the blur grows.
float fbm(vec2 p)
{
    float sum = 0.0, strength = 0.5, total = 0.0;
    for (int i = 0; i < 5; ++i) {
        float keep = exp(-blur * 0.12 * float(i * i));
        sum += strength * keep * noise(p);
        total += strength * keep;
        p = p * 2.03 + vec2(17.0, 9.0);
        strength *= 0.5;
    }
    return sum / total;
}

float soft(float edge, float x) { return smoothstep(edge - 0.02 - blur * 0.02, edge + 0.02 + blur * 0.02, x); }

vec3 clouds(vec2 uv)
{
    vec2 p = uv * vec2(size.x / size.y, 1.0) * 2.2 + vec2(time * 0.03, 0.0);
    float c = fbm(p + fbm(p + time * 0.02));
    vec3 sky = mix(vec3(0.16, 0.29, 0.52), vec3(0.42, 0.60, 0.82), uv.y);
    return mix(sky, vec3(0.93, 0.95, 1.0), soft(0.5, c) * 0.85);
}

vec3 aurora(vec2 uv)
{
    vec2 p = uv * vec2(size.x / size.y, 1.0);
    vec3 colour = mix(vec3(0.01, 0.02, 0.06), vec3(0.03, 0.06, 0.14), uv.y);
    for (int i = 0; i < 3; ++i) {
        float fi = float(i);
        float line = 0.35 + 0.12 * fi + 0.12 * sin(p.x * (1.3 + fi * 0.4) + time * (0.12 + 0.05 * fi)) +
                     0.08 * (fbm(vec2(p.x * 1.5 + fi * 7.0, time * 0.05)) - 0.5);
        float curtain = exp(-pow((uv.y - line) * (9.0 - min(blur, 6.0)), 2.0)) *
                        (0.6 + 0.4 * fbm(vec2(p.x * 6.0 + fi, time * 0.2)));
        vec3 tint = mix(vec3(0.15, 0.95, 0.55), vec3(0.55, 0.3, 0.95), fi / 2.0);
        colour += tint * curtain * 0.8;
    }
    return colour;
}

vec3 petals(vec2 uv)
{
    vec2 p = uv * vec2(size.x / size.y, 1.0) * 4.0;
    vec3 colour = mix(vec3(0.98, 0.80, 0.78), vec3(0.99, 0.90, 0.84), uv.y);
    for (int layer = 0; layer < 2; ++layer) {
        float depth = 1.0 + float(layer) * 0.7;
        vec2 q = p * depth + vec2(time * 0.15 * depth, -time * 0.25 * depth);
        vec2 cell = floor(q), f = fract(q) - 0.5;
        float h = hash(cell + float(layer) * 13.0);
        if (h > 0.55) {
            float a = time * (0.5 + h) + h * 6.28;
            vec2 r = mat2(cos(a), -sin(a), sin(a), cos(a)) * (f - (vec2(hash(cell + 3.0), hash(cell + 5.0)) - 0.5) * 0.4);
            // A petal: an ellipse with a notch at one end.
            float d = length(r * vec2(1.0, 1.9)) - 0.22 + 0.05 * smoothstep(0.0, 0.2, r.y);
            float w = 0.015 + blur * 0.02;
            float petal = 1.0 - smoothstep(-w, w, d);
            colour = mix(colour, mix(vec3(0.95, 0.55, 0.65), vec3(1.0, 0.75, 0.80), h), petal * (0.9 - 0.3 * float(layer)));
        }
    }
    return colour;
}

vec3 sea(vec2 uv)
{
    vec2 p = uv * vec2(size.x / size.y, 1.0);
    vec3 colour = mix(vec3(0.55, 0.80, 0.92), vec3(0.02, 0.22, 0.36), smoothstep(0.15, 1.0, uv.y));
    for (int i = 0; i < 4; ++i) {
        float fi = float(i);
        float crest = 0.3 + fi * 0.17 + 0.035 * sin(p.x * (5.0 + fi * 2.0) - time * (0.6 + fi * 0.2)) +
                      0.02 * fbm(vec2(p.x * 3.0 + fi * 4.0, time * 0.3));
        float below = soft(crest, uv.y);
        colour = mix(colour, mix(vec3(0.06, 0.42, 0.58), vec3(0.01, 0.14, 0.26), fi / 3.0), below * 0.55);
        colour += vec3(0.7, 0.9, 1.0) * exp(-pow((uv.y - crest) * (120.0 / (1.0 + blur)), 2.0)) * 0.35;
    }
    return colour;
}

void main()
{
    vec2 uv = qt_TexCoord0;
    vec3 colour = kind < 0.5 ? clouds(uv) : kind < 1.5 ? aurora(uv) : kind < 2.5 ? petals(uv) : sea(uv);
    // Round lower corners, antialiased over a pixel.
    vec2 pixel = uv * size;
    vec2 corner = vec2(clamp(pixel.x, radius, size.x - radius), min(pixel.y, size.y - radius));
    float outside = length(pixel - corner) - radius;
    float inside = 1.0 - clamp(outside + 0.5, 0.0, 1.0);
    fragColor = vec4(colour, 1.0) * inside * qt_Opacity;
}
