// Properties and methods of small objects.
function Point(x, y) { this.x = x; this.y = y; }
Point.prototype.add = function(other) { this.x += other.x; this.y = this.y + other.y; return this; };
Point.prototype.norm = function() { return this.x * this.x + this.y * this.y; };
function Account(owner) { this.owner = owner; this.balance = 0; this.count = 0; }
Account.prototype.deposit = function(n) { this.balance = this.balance + n; this.count = this.count + 1; };
function run() {
    var p = new Point(1, 2), q = new Point(3, 5), acc = new Account("me"), total = 0;
    for (var i = 0; i < 300000; i++) {
        p.add(q);
        acc.deposit(i & 15);
        if (p.x > 1000) { p = new Point(i & 7, 1); total = (total + p.norm()) % 1000003; }
        total = (total + p.norm() + acc.balance) % 1000003;
    }
    return total + acc.count;
}
print("objects " + run());
