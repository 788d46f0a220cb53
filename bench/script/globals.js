// Top-level code on global variables.
var primes = 0, limit = 6000, n, d, prime, sum = 0;
for (n = 2; n < limit; n++) {
    prime = true;
    for (d = 2; d * d <= n; d++)
        if (n % d == 0) { prime = false; break; }
    if (prime) primes++;
}
for (n = 0; n < 400000; n++) sum = (sum + n * 3) & 0xFFFFF;
print("globals " + primes + " " + sum);
