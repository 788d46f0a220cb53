// Floating-point members of objects.
function Body(x, y, vx, vy, m) { this.x = x; this.y = y; this.vx = vx; this.vy = vy; this.m = m; }
function advance(bodies, dt) {
    for (var i = 0; i < bodies.length; i++) {
        var a = bodies[i];
        for (var k = i + 1; k < bodies.length; k++) {
            var b = bodies[k], dx = a.x - b.x, dy = a.y - b.y, d2 = dx * dx + dy * dy + 0.01, mag = dt / (d2 * Math.sqrt(d2));
            a.vx -= dx * b.m * mag; a.vy -= dy * b.m * mag; b.vx += dx * a.m * mag; b.vy += dy * a.m * mag;
        }
    }
    for (i = 0; i < bodies.length; i++) { a = bodies[i]; a.x += dt * a.vx; a.y += dt * a.vy; }
}
var bodies = [new Body(0, 0, 0, 0, 40), new Body(5, 0, 0, 2.5, 0.04), new Body(0, 8, -2, 0, 0.01), new Body(-13, 0, 0, -1.7, 0.002)];
for (var i = 0; i < 12000; i++) advance(bodies, 0.001);
print("nbody " + Math.round(bodies[1].x * 1000) + " " + Math.round(bodies[3].y * 1000));
