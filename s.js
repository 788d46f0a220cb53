Debug.wait(100000);
Debug.breakexpr("hit", false, 100001); Debug.showbreak(0);
Debug.setnext("program.s", 13);
var t = new Date().getTime();
Debug.go(); Debug.echo(Debug.wait(100000)); Debug.print("counter", "d"); Debug.echo(new Date().getTime()-t);
Debug.quit();
