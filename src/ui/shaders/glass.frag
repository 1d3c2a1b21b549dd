#version 440
// The notch as a piece of glass: what lies behind it bent near its rim as a thick pane bends it,
// frosted, its colours lifted; the colour beyond its edge spilling in, a rim catching the light,
// and a soft shadow beneath. The shape is worked out here from its measures, as a distance to its
// outline, so that every edge is smooth at any size.
layout(location = 0) in vec2 qt_TexCoord0;
layout(location = 0) out vec4 fragColor;
layout(std140, binding = 0) uniform buf {
    mat4 qt_Matrix;
    float qt_Opacity;
    vec2 size;
    // The body's left edge, width, height and lower corners' radius, in the item's points.
    vec4 body;
    float shoulder;
    // Where the item lies on the backdrop picture, as a part of it (x, y, width, height).
    vec4 sourceRect;
    // 1 with a picture to bend; 0 over the desktop's own blur (or nothing at all).
    float hasSource;
    // How much of what lies behind shows through where there is no picture to bend.
    float clearness;
    float innerRefractionAmount;
    float innerRefractionHeight;
    float outerRefractionAmount;
    float outerRefractionHeight;
    float backdropBlurRadius;
    float faceColorMatrixBlack;
    float faceColorMatrixWhite;
    float faceColorMatrixSaturation;
    float faceOpacity;
    vec4 faceTint;
    float bleedAmount;
    float bleedOpacity;
    float bleedDarkenBlend;
    float bleedHeight;
    float shadowOpacity;
    float shadowBlurRadius;
    float shadowVibrancyContribution;
    float highlightAmount;
    float highlightCurvature;
    float highlightHeight;
    float highlightSpread;
    float highlightAngle;
    vec4 highlightColorA;
    vec4 highlightColorB;
    float sdfSmoothness;
};
layout(binding = 1) uniform sampler2D source;

// The distance to a box (negative inside).
float box(vec2 p, vec2 centre, vec2 halfSize, float radius)
{
    vec2 d = abs(p - centre) - halfSize + radius;
    return length(max(d, 0.0)) + min(max(d.x, d.y), 0.0) - radius;
}

// The distance to the outline: the body hanging from above the top edge with its lower corners
// rounded, and the concave shoulders where it meets the edge.
float outline(vec2 p)
{
    const float above = 4096.0;
    float w = body.y, h = body.z;
    vec2 q = p - vec2(body.x, 0.0);
    float d = box(q, vec2(w * 0.5, (h - above) * 0.5), vec2(w * 0.5, (h + above) * 0.5), body.w);
    if (shoulder > 0.5) {
        vec2 tall = vec2(shoulder * 0.5, (shoulder + above) * 0.5);
        float left = max(box(q, vec2(-shoulder * 0.5, (shoulder - above) * 0.5), tall, 0.0),
                         shoulder - length(q - vec2(-shoulder, shoulder)));
        float right = max(box(q, vec2(w + shoulder * 0.5, (shoulder - above) * 0.5), tall, 0.0),
                          shoulder - length(q - vec2(w + shoulder, shoulder)));
        d = min(d, min(left, right));
    }
    return d;
}

vec3 behind(vec2 p)
{
    vec2 uv = sourceRect.xy + clamp(p / size, 0.0, 1.0) * sourceRect.zw;
    vec2 step = vec2(max(backdropBlurRadius * 0.35, 0.0)) / size * sourceRect.zw;
    vec3 c = texture(source, uv).rgb * 0.4;
    c += texture(source, uv + vec2(step.x, step.y)).rgb * 0.15;
    c += texture(source, uv + vec2(-step.x, step.y)).rgb * 0.15;
    c += texture(source, uv + vec2(step.x, -step.y)).rgb * 0.15;
    c += texture(source, uv + vec2(-step.x, -step.y)).rgb * 0.15;
    return c;
}

vec3 vivid(vec3 c, float black, float white, float saturation)
{
    c = clamp((c - black) / max(white - black, 0.01), 0.0, 1.0);
    float luma = dot(c, vec3(0.2126, 0.7152, 0.0722));
    return clamp(mix(vec3(luma), c, saturation), 0.0, 1.0);
}

void main()
{
    vec2 p = qt_TexCoord0 * size;
    float d = outline(p);
    vec2 e = vec2(0.75, 0.0);
    vec2 normal = vec2(outline(p + e.xy) - outline(p - e.xy), outline(p + e.yx) - outline(p - e.yx));
    normal = length(normal) > 1e-4 ? normalize(normal) : vec2(0.0, 1.0);
    float depth = max(-d, 0.0);
    float smoothness = max(sdfSmoothness, 0.5);
    float inside = 1.0 - smoothstep(-smoothness * 0.5, smoothness * 0.5, d);

    // The face: what lies behind, pulled in from beyond the rim as a thick pane's edge bends it.
    vec3 face;
    float faceAlpha;
    if (hasSource > 0.5) {
        float inner = 1.0 - clamp(depth / max(innerRefractionHeight, 0.5), 0.0, 1.0);
        float outer = 1.0 - clamp(depth / max(outerRefractionHeight, 0.5), 0.0, 1.0);
        vec2 bend = normal * (innerRefractionAmount * innerRefractionHeight * inner * inner
                              + outerRefractionAmount * outerRefractionHeight * outer * outer * outer);
        face = vivid(behind(p + bend), faceColorMatrixBlack, faceColorMatrixWhite, faceColorMatrixSaturation);
        // Dark enough under the notch's white writing.
        face *= 0.58;
        // The colour just beyond the edge spills in along the rim.
        vec3 beyond = vivid(behind(p + normal * (bleedHeight * 0.5 + 2.0)), 0.0, 1.0, faceColorMatrixSaturation);
        float spill = bleedAmount * bleedOpacity * (1.0 - smoothstep(0.0, max(bleedHeight, 0.5), depth));
        face = mix(face, mix(beyond, face * beyond, bleedDarkenBlend), clamp(spill, 0.0, 1.0) * 0.55);
        faceAlpha = faceOpacity;
    } else {
        face = vec3(0.06);
        faceAlpha = mix(0.82, 0.45, clearness) * faceOpacity;
    }
    face = mix(face, faceTint.rgb, faceTint.a);

    // The rim catches the light from one side (and, fainter, the opposite one).
    vec2 light = vec2(cos(radians(highlightAngle)), -sin(radians(highlightAngle)));
    float facing = dot(normal, light);
    float band = 1.0 - smoothstep(0.0, max(highlightHeight, 0.5), depth);
    float lit = pow(abs(facing), mix(4.0, 0.5, clamp(highlightSpread, 0.0, 1.0)));
    // Curvature gathers the light where the outline bends (the corners).
    float corner = 1.0 - abs(normal.y) * abs(normal.x) * 2.0;
    lit *= mix(1.0, 1.0 - corner * 0.5, clamp(highlightCurvature, 0.0, 1.0));
    vec4 rim = mix(highlightColorB, highlightColorA, facing > 0.0 ? 1.0 : 0.0);
    float rimStrength = clamp(highlightAmount * band * lit * rim.a, 0.0, 1.0);
    face = mix(face, rim.rgb, rimStrength);
    faceAlpha = max(faceAlpha, rimStrength);

    // Beneath: a soft shadow, tinted by what it falls on.
    float outside = max(d, 0.0);
    float fall = 1.0 - smoothstep(0.0, max(shadowBlurRadius, 0.5), outside);
    float shadowAlpha = shadowOpacity * fall * fall * (p.y > body.z * 0.5 ? 1.0 : 0.6);
    vec3 shadowColour = hasSource > 0.5
        ? vivid(behind(p), 0.0, 1.0, 1.6) * 0.25 * shadowVibrancyContribution
        : vec3(0.0);

    vec4 glass = vec4(face * faceAlpha, faceAlpha) * inside;
    vec4 shade = vec4(shadowColour * shadowAlpha, shadowAlpha) * (1.0 - inside);
    fragColor = (glass + shade) * qt_Opacity;
}
