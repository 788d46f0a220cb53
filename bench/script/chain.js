// Members that are found along a chain of prototypes.
function Base() {}
Base.prototype.id = function() { return 1; };
Base.prototype.scale = 3;
function Middle() {}
Middle.prototype = new Base();
Middle.prototype.twice = function(n) { return this.scale * n * 2; };
function Lower() {}
Lower.prototype = new Middle();
function Leaf(n) { this.n = n; }
Leaf.prototype = new Lower();
Leaf.prototype.run = function() { return this.twice(this.n) + this.id() + this.scale; };
function go(rounds) {
    var leaves = [new Leaf(1), new Leaf(2), new Leaf(3)], total = 0;
    for (var i = 0; i < rounds; i++) total = (total + leaves[i % 3].run() + leaves[(i + 1) % 3].scale) % 1000003;
    return total;
}
print("chain " + go(150000));
